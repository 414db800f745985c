/**
 * @file
 * Lies beside the other headers where the library for 64-bit hosts is installed: comnlib/types.h
 * looks for it, and refuses a host that this installation has no library for.
 */
