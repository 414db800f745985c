/* Multiplies two decimal texts exactly and prints the product as text. */
#include <comnlib.h>
#include <stdio.h>
#include <string.h>

int main(void) {
  const char* factors[2] = {"19.99", "1234567890123456789012"};
  CS_CONTEXT context = {0};
  CS_DATAFMT text = {.datatype = CS_CHAR_TYPE, .format = CS_DFMT_NULLTERM};
  CS_DATAFMT number = {.datatype = CS_NUMERIC_TYPE,
                       .precision = CS_USE_SRCVALUE, /* as many digits as each text has */
                       .scale = CS_USE_SRCVALUE};
  CS_NUMERIC value[2], product;
  CS_CHAR buffer[80];
  CS_INT length;

  if (com_conv_init(&context) != CS_SUCCEED) return 1;
  CS_CONV_FUNC read = com_conv_func(&context, text.datatype, number.datatype);
  CS_CONV_FUNC write = com_conv_func(&context, number.datatype, text.datatype);
  CS_RETCODE code = CS_SUCCEED;
  for (int i = 0; i < 2 && code == CS_SUCCEED; ++i) {
    text.maxlength = (CS_INT)strlen(factors[i]); /* a source's length */
    code = read(&context, &text, factors[i], &number, &value[i], &length);
  }
  text.maxlength = sizeof buffer; /* a destination's room */
  if (code == CS_SUCCEED) code = comn_nummul(&value[0], &value[1], &product);
  if (code == CS_SUCCEED) code = write(&context, &number, &product, &text, buffer, &length);
  if (code == CS_SUCCEED) printf("%s\n", buffer); /* 24679012123567901212349.88 */
  com_conv_free(&context);
  return code == CS_SUCCEED ? 0 : 1;
}
