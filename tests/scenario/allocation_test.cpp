// Whole scenarios, from set-up to tear-down, with every allocation failing in turn: the stated
// code, everything as before the failed call, nothing lost, and success once memory is back.
// Conversions and arithmetic ask for no memory at all.
#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <filesystem>
#include <string_view>
#include <utility>
#include <vector>

#include "comnlib/convert.h"
#include "comnlib/list.h"
#include "comnlib/memory.h"
#include "comnlib/money.h"
#include "comnlib/numeric.h"
#include "comnlib/thread.h"
#include "runtime/commmgr.h"
#include "scenario/files.h"
#include "scenario/run.h"
#include "support/scratch.h"

// What the linker hands over here, see the build file.
extern "C" {
void* __real_malloc(std::size_t size);
void* __real__Znwj(std::size_t size);
}

namespace {

using scenario::Keeps;
using scenario::made;
using scenario::Run;
using scenario::words;
using namespace std::string_view_literals;

// --- Context set-up ------------------------------------------------------------------------------

std::string tables_of(const CS_CONTEXT& context) {
  std::string text = words(context.ctxcvttbl.cvtdim, context.ctxcvttbl.cvttbl != nullptr);
  for (const auto* source = context.ctxusrcvttbl; source != nullptr; source = source->nextsrc)
    for (const auto* pair = source; pair != nullptr; pair = pair->nextdest)
      text += words(pair->srctype, pair->desttype, pair->cvtfunc != nullptr);
  if (context.ctxnulls.nullvals == nullptr) return text;
  const CsDefVal& number = context.ctxnulls.nullvals[CS_INT_TYPE];
  text += words(number.dvsize, *static_cast<char*>(number.dventity));
  for (const auto* user = context.ctxusrnulls; user != nullptr; user = user->nextnull)
    text += words(user->dttype, std::string_view(static_cast<char*>(user->dventity),
                                                 static_cast<std::size_t>(user->dvsize)));
  return text;
}

void context_tables(Run& run) {
  CS_CONTEXT context{};
  const auto tables = [&] { return tables_of(context); };
  run.step("matrix", {tables}, [&] { return com_conv_init(&context); });
  for (const auto& [from, to] : {std::pair{30, 0}, {30, 1}, {31, 30}, {8, 31}})
    run.step("conversion", {tables}, [&, from = from, to = to] {
      return com_conv_install(&context, from, to, comn_voidtoany);
    });
  // What a failed call has made of the null table is kept until it is freed.
  run.step("null values", {.keeps = Keeps::kProgress},
           [&] { return com_null_free(&context), com_null_init(&context); });
  for (const auto& [type, value] :
       {std::pair{8, "A"sv}, {40, "abc"sv}, {40, "wxyz"sv}, {41, "!"sv}})
    run.step("null value", {tables}, [&, type = type, value = value] {
      return com_null_set(&context, type, value.data(), static_cast<CS_INT>(value.size()));
    });
  run.step("default", {tables}, [&] { return com_null_reinstall(&context, CS_INT_TYPE); });
  for (const CS_INT type : {41, 40}) EXPECT_EQ(CS_SUCCEED, com_null_reinstall(&context, type));
  EXPECT_EQ(CS_SUCCEED, com_null_free(&context));
  EXPECT_EQ(CS_SUCCEED, com_conv_free(&context));
}

// --- Lists ---------------------------------------------------------------------------------------

std::string contents_of(LM_HANDLE* list) {
  static std::string seen;
  seen.clear();
  const LM_PRINT_FUNC print = [](CS_VOID* data) -> CS_RETCODE {
    return seen += words(static_cast<char*>(data)), CS_SUCCEED;
  };
  EXPECT_EQ(CS_SUCCEED, lm_list_op(list, LM_OP_PRINT_DATA, nullptr, CS_UNUSED,
                                   reinterpret_cast<void*>(print), nullptr));
  return words(seen, list->hdlprop->handle_load, list->hdlprop->max_tablesize,
               list->cur_ptr != nullptr);
}

template <CS_INT Type>
void lists(Run& run) {
  static char elements[][2] = {"a", "b", "c", "d", "e", "f"};
  LM_CONTEXT* context = nullptr;
  LM_HANDLE* list = nullptr;
  LM_HANDLE* other = nullptr;
  const auto handles = [&] {
    return words(context->cxtprop->context_load, context->first_handle == list,
                 context->cxtprop->cur_handleaddr == list);
  };
  const auto contents = [&] { return contents_of(list); };
  const auto apply = [&](CS_INT code, char* element) {
    return lm_list_op(list, code, element, 1, code == LM_OP_INSERT ? element : nullptr, nullptr);
  };
  run.step("context", {made(context)},
           [&] { return lm_initlm(LM_MIN_VERSION, "c", CS_NULLTERM, &context); });
  if (run.over()) return;
  CS_INT pool = 3;
  lm_property(context, CS_SET, LM_CTX_MAX_POOLSIZE, &pool, 4, nullptr);
  run.step("list", {handles}, [&] { return lm_list_alloc(context, Type, "one", 3, &list); });
  run.step("other", {handles}, [&] { return lm_list_alloc(context, Type, "two", 3, &other); });
  for (char* element : elements)
    run.step("insert", {contents}, [&] { return apply(LM_OP_INSERT, element); });
  run.see("cursor", [&] { return words(apply(LM_OP_FIND, elements[2]), contents()); });
  for (const CS_INT code : {LM_OP_INSERT_BEFORE, LM_OP_INSERT_AFTER}) {
    if (Type != LM_DLINK) break;
    run.step("beside", {contents},
             [&] { return lm_list_op(list, code, nullptr, CS_UNUSED, elements[0], nullptr); });
  }
  // The nodes of a table that was not finished are free ones afterwards.
  for (CS_INT size : {23, 7}) {
    if (Type != LM_CHASH && Type != LM_DHASH) break;
    run.step("rebuild", {contents, CS_MEM_ERROR, Keeps::kProgress},
             [&] { return lm_list_prop(list, CS_SET, LM_PROP_MAX_TABLESIZE, &size, 4, nullptr); });
  }
  run.see("free nodes come first", [&] {
    for (const std::size_t at : {0, 3}) EXPECT_EQ(CS_SUCCEED, apply(LM_OP_DELETE, elements[at]));
    return words(apply(LM_OP_INSERT, elements[5]), contents());
  });
  run.see("drop", [&] { return words(lm_list_drop(list), handles()); });
  EXPECT_EQ(CS_SUCCEED, lm_exit(context));
}

// --- Pools ---------------------------------------------------------------------------------------

// A context whose memory is the host's, and a lock that counts how often it is held.
struct PoolHost : CS_CONTEXT {
  PoolHost() : CS_CONTEXT{}, threads(*comn_thread_table()) {
    ctxversion = 113;
    ctxmalloc = [](CS_CONTEXT*, CS_INT n) { return comn_malloc(static_cast<std::size_t>(n)); };
    ctxfree = [](CS_CONTEXT*, CS_VOID* block) { comn_free(block); };
    threads.take_mutex_fn = [](COMN_MUTEX* mutex) { return ++held, comn_take_mutex(mutex); };
    threads.release_mutex_fn = [](COMN_MUTEX* mutex) { return --held, comn_release_mutex(mutex); };
    held = 0;
  }
  CS_THREAD threads;
  static inline int held = 0;
};

// A pool and its subpools in use, each block filled with a byte of its own.
class PoolUse {
 public:
  PoolUse(Run& run, MmHandle* top) : run_(run), top_(top) {}

  void allocate(MmHandle* pool, CS_INT size) {
    void* block = nullptr;
    run_.step("allocate", {state()}, [&] { return comn_mmalloc(pool, size, &block); });
    if (block == nullptr) return;
    const auto fill = static_cast<char>('a' + blocks_.size() % 26);
    std::memset(block, fill, static_cast<std::size_t>(size));
    blocks_.emplace_back(block, fill);
  }
  void reallocate(CS_INT size) {
    run_.step("reallocate", {state()},
              [&] { return comn_mmrealloc(top_, size, &blocks_[0].first); });
  }
  void free(std::size_t which) {
    run_.see("free", [&] {
      return words(comn_mmfree(top_, std::exchange(blocks_[which].first, nullptr)), state()());
    });
  }
  MmHandle* subpool(MmHandle* above) {
    MmHandle* below = nullptr;
    run_.step("subpool", {state()},
              [&] { return comn_mmproperty(above, CS_GET, MM_PROP_SUBPOOL, &below, 1, nullptr); });
    return below;
  }

 private:
  scenario::State state() const {
    return [this] {
      std::string text = words(com__mm_validate(top_), PoolHost::held);
      for (const auto& [block, fill] : blocks_)
        if (block != nullptr) text += words(*static_cast<char*>(block) == fill);
      return text;
    };
  }

  Run& run_;
  MmHandle* top_;
  std::vector<std::pair<void*, char>> blocks_;
};

// Everything that a pool of one discipline offers; its subpools have all of them.
void use_pool(Run& run, MmHandle* pool, CS_INT kind) {
  PoolUse use(run, pool);
  const auto set = [](MmHandle* to, CS_INT type) {
    EXPECT_EQ(CS_SUCCEED, comn_mmproperty(to, CS_SET, MM_PROP_POOLTYPE, &type, CS_UNUSED, nullptr));
  };
  set(pool, kind);
  for (const CS_INT size : {10, 300, 3000, 9000, 50, 5000})
    use.allocate(pool, kind == MM_POOL_UNIFORM ? 2000 : size);
  for (const CS_INT size : {40, 4000, 20'000})
    if (kind == MM_POOL_BUDDY) use.reallocate(size);
  for (const std::size_t which : {3, 1})
    if (kind != MM_POOL_ALLOCONLY) use.free(which);
  MmHandle* below = pool;
  for (const CS_INT type : {MM_POOL_BUDDY, MM_POOL_ALLOCONLY, MM_POOL_UNIFORM}) {
    below = use.subpool(below);
    if (run.over()) return;
    set(below, type);
    for (int i = 0; i < 3; ++i) use.allocate(below, 3500);
  }
  run.see("busy", [&] { return words(comn_mmdrop(pool, CS_UNUSED), PoolHost::held); });
}

enum class Control { kAllocated, kOfCaller };

template <CS_INT Kind, bool Locked, Control From = Control::kAllocated>
void pools(Run& run) {
  alignas(4) static std::array<CS_BYTE, MM_CTL_SIZE> control;
  PoolHost host;
  if (Locked) host.ctxthread = &host.threads;
  MmHandle* pool = nullptr;
  if (From == Control::kOfCaller) pool = reinterpret_cast<MmHandle*>(control.data());
  run.step("pool", {made(pool), CS_FAIL}, [&] { return comn_mminit(&host, &pool); });
  if (run.over()) return;
  use_pool(run, pool, Kind);
  EXPECT_EQ(CS_SUCCEED, comn_mmdrop(pool, MM_FORCE_DROP));
}

// An area of the caller's first, then chunks from a source of its own.
void managed_pool(Run& run) {
  alignas(4) static std::array<CS_BYTE, 5000> area;
  const MM_SBREAK_FUNC more = [](MmHandle*, CS_VOID*, CS_INT size) {
    return comn_malloc(static_cast<std::size_t>(size));
  };
  const MM_UNSBREAK_FUNC less = [](MmHandle*, CS_VOID*, CS_VOID* chunk) { comn_free(chunk); };
  MmHandle* pool = nullptr;
  PoolHost::held = 0;
  ASSERT_EQ(CS_SUCCEED, comn_mmmanage(area.data(), CS_INT{area.size()}, &pool));
  comn_mmproperty(pool, CS_SET, MM_PROP_SBREAK, reinterpret_cast<void*>(more), 0, nullptr);
  comn_mmproperty(pool, CS_SET, MM_PROP_UNSBREAK, reinterpret_cast<void*>(less), 0, nullptr);
  use_pool(run, pool, MM_POOL_BUDDY);
  EXPECT_EQ(CS_SUCCEED, comn_mmdrop(pool, MM_FORCE_DROP));
}

// --- Threads -------------------------------------------------------------------------------------

template <class Object>
void object(Run& run, CS_RETCODE (*create)(Object**), CS_RETCODE (*destroy)(Object*)) {
  Object* one = nullptr;
  run.step("object", {made(one), CS_FAIL}, [&] { return create(&one); });
  EXPECT_TRUE(one == nullptr || destroy(one) == CS_SUCCEED);
}

void thread_objects(Run& run) {
  object<COMN_MUTEX>(run, comn_create_mutex, comn_delete_mutex);
  object<COMN_EVENT>(run, comn_create_event, comn_delete_event);
  object<COMN_COND>(run, comn_create_cond, comn_delete_cond);
  object<COMN_SEM>(run, comn_create_sem, comn_delete_sem);
  static const COMN_START_FUNC start = [](void* argument) { return argument; };
  const auto create = [](COMN_THREAD** id) { return comn_create_thread(id, start, nullptr); };
  object<COMN_THREAD>(run, create, comn_join_thread);
  run.step("coroutine mode", {.code = CS_FAIL}, comn_start_coroutine_mode);
  if (run.over()) return;
  EXPECT_EQ(CS_SUCCEED, comn_take_coroutine_control());
  EXPECT_EQ(CS_SUCCEED, comn_end_coroutine_mode());
}

// --- The sweep -----------------------------------------------------------------------------------

struct Scenario {
  const char* name;
  void (*run)(Run&);
};

void PrintTo(const Scenario& scenario, std::ostream* to) {
  *to << scenario.name;
}

class Allocations : public testing::TestWithParam<Scenario> {
 protected:
  // Diagnostics go to a file in the working directory too.
  Allocations() { std::filesystem::current_path(directory_.path()); }
  ~Allocations() override { std::filesystem::current_path(before_); }

 private:
  std::filesystem::path before_ = std::filesystem::current_path();
  scratch::Directory directory_;
};

TEST_P(Allocations, FailInTurn) {
  scenario::set_files_up();
  EXPECT_LT(0U, scenario::sweep(GetParam().run));
}

constexpr Scenario kScenarios[] = {
    {"Context", context_tables},
    {"LinkedList", lists<LM_DLINK>},
    {"Queue", lists<LM_QUEUE>},
    {"Stack", lists<LM_STACK>},
    {"ChainedTable", lists<LM_CHASH>},
    {"OpenTable", lists<LM_DHASH>},
    {"BuddyPool", pools<MM_POOL_BUDDY, false>},
    {"AllocOnlyPool", pools<MM_POOL_ALLOCONLY, false>},
    {"UniformPool", pools<MM_POOL_UNIFORM, false>},
    {"LockedPool", pools<MM_POOL_BUDDY, true>},
    {"PoolInControlArea", pools<MM_POOL_BUDDY, true, Control::kOfCaller>},
    {"ManagedPool", managed_pool},
    {"ThreadObjects", thread_objects},
    {"Locales", scenario::locales},
    {"ConversionTables", scenario::conversion_tables},
    {"SectionedFiles", scenario::sectioned_files},
    {"Configuration", scenario::configuration}};
INSTANTIATE_TEST_SUITE_P(All, Allocations, testing::ValuesIn(kScenarios),
                         [](const auto& row) { return row.param.name; });

// --- Conversions and arithmetic ------------------------------------------------------------------

std::size_t plain_allocations = 0;

// Those through the host's allocator and those past it.
std::size_t allocations() {
  return host_alloc::allocations() + plain_allocations;
}

// Bytes that most types can read, UTF-16 and records included; and a date, for the types of text.
TEST(Conversions, AskForNoMemory) {
  CS_CONTEXT context{};
  ASSERT_EQ(CS_SUCCEED, com_conv_init(&context));
  ASSERT_EQ(CS_SUCCEED, com_null_init(&context));
  std::size_t converted = 0;
  std::array<CS_BYTE, 300> src{}, dest{};
  CS_DATAFMT source{}, target{};
  source.maxlength = 20;
  target.maxlength = target.precision = 60;
  const std::size_t before = allocations();
  for (const std::string_view bytes : {"\1\0\0\1"sv, "1\0\0\0"sv, "12:30 2 january 2000"sv}) {
    std::memcpy(src.data(), bytes.data(), bytes.size());
    const CS_INT last = bytes.size() > 4 ? CS_IMAGE_TYPE : CS_INT{CS_UNICHAR_TYPE};
    for (source.datatype = 0; source.datatype <= last; ++source.datatype) {
      for (target.datatype = 0; target.datatype < CS_BUILTIN_TYPES; ++target.datatype) {
        const auto routine = com_conv_func(&context, source.datatype, target.datatype);
        CS_INT length = 0;
        if (routine != nullptr &&
            routine(&context, &source, src.data(), &target, dest.data(), &length) == CS_SUCCEED)
          ++converted;
      }
    }
  }
  EXPECT_EQ(before, allocations());
  EXPECT_LT(500U, converted);
  com_null_free(&context);
  com_conv_free(&context);
}

TEST(Arithmetic, AsksForNoMemory) {
  CS_NUMERIC a{77, 10, {}}, b{40, 3, {}}, number{};
  a.array[30] = b.array[16] = 7;
  const CS_MONEY money{1, 5};
  CS_MONEY sum{};
  CS_CHAR text[40];
  const std::size_t before = allocations();
  for (const auto operation : {comn_numadd, comn_numsub, comn_nummul, comn_numdivide})
    static_cast<void>(operation(&a, &b, &number));
  for (const auto operation : {comn_mnyadd, comn_mnysub, comn_mnymul, comn_mnydivide, comn_mnyxdiv})
    static_cast<void>(operation(&money, &money, &sum));
  com_cvtmnytochar(&money, text, sizeof text, 0);
  EXPECT_EQ(before, allocations());
}

}  // namespace

extern "C" {
void* __wrap_malloc(std::size_t size) {
  return ++plain_allocations, __real_malloc(size);
}
void* __wrap__Znwj(std::size_t size) {
  return ++plain_allocations, __real__Znwj(size);
}
}
