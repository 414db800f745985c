// Lists: the key hash, scripts for every kind, where tables put their elements, printing,
// properties and stops.
#include <algorithm>
#include <cctype>
#include <span>
#include <string_view>

#include "runtime/lmhash.h"
#include "support/hosts.h"
#include "support/stops.h"
#include "support/table.h"

namespace {

using Text = std::string;

CS_RETCODE op(LM_HANDLE* list, CS_INT code, std::string_view key, void* data = nullptr) {
  return lm_list_op(list, code, key.data(), static_cast<CS_INT>(key.size()), data, nullptr);
}

CS_RETCODE op(LM_HANDLE* list, CS_INT code, void* data = nullptr) {
  return lm_list_op(list, code, nullptr, CS_UNUSED, data, nullptr);
}

CS_RETCODE set(LM_HANDLE* list, CS_INT property, CS_INT value) {
  return lm_list_prop(list, CS_SET, property, &value, 4, nullptr);
}

CS_RETCODE set_function(LM_HANDLE* list, CS_INT property, auto* function) {
  return lm_list_prop(list, CS_SET, property, reinterpret_cast<void*>(function), 0, nullptr);
}

// A context with one list. Whatever the test did, nothing is left when it goes.
struct Fixture {
  hosts::NothingLost nothing_lost;
  LM_CONTEXT* context = nullptr;
  LM_HANDLE* list = nullptr;
  CS_RETCODE code;

  explicit Fixture(CS_INT type, CS_INT table_size = 7, CS_INT pool_size = 0)
      : code(lm_initlm(LM_MIN_VERSION, "lists", CS_NULLTERM, &context)) {
    if (code != CS_SUCCEED) return;
    lm_property(context, CS_SET, LM_CTX_MAX_TABLESIZE, &table_size, 4, nullptr);
    lm_property(context, CS_SET, LM_CTX_MAX_POOLSIZE, &pool_size, 4, nullptr);
    code = lm_list_alloc(context, type, "one", 3, &list);
  }
  ~Fixture() { EXPECT_TRUE(context == nullptr || lm_exit(context) == CS_SUCCEED); }
};

// Each four bytes, 'Z' for those that the key lacks, are a digit to the base of 37.
TEST(ListHash, FollowsTheRuleForAllBytes) {
  table::for_each_line("runtime/hashes.txt", [](const table::Fields& row) {
    const Text key = table::text_of(row[0]);
    const auto number = static_cast<CS_UINT>(std::stoul(row[1], nullptr, 16));
    const auto size = static_cast<CS_INT>(key.size());
    EXPECT_EQ(number, lm___api_key_to_uint(key.data(), size));
    for (const CS_UINT slots : {2U, 10U, 997U}) {
      const auto count = static_cast<CS_INT>(slots);
      EXPECT_EQ(number % slots, lm__api_key_to_hash(key.data(), size, count));
      EXPECT_EQ(number * 7 % (slots - 1) + 1, lm__api_key_to_hash2(key.data(), size, count));
    }
  });
}

// The letters of the elements in a list's own structures, those of a table sorted, the one at the
// cursor in upper case. States, links and counts are checked on the way.
Text contents(LM_HANDLE* list) {
  Text found;
  const auto see = [&](const auto& node) {
    EXPECT_EQ(LM_STATE_IN_USE, node.state);
    const char letter = *static_cast<const char*>(node.data);
    found += static_cast<char>(&node == list->cur_ptr ? std::toupper(letter) : letter);
  };
  const auto walk = [&](const DLinkNode* node) {
    const DLinkNode* last = nullptr;
    for (; node != nullptr; last = node, node = node->next) {
      EXPECT_EQ(last, node->previous);
      see(*node);
    }
    return last;
  };
  const CS_INT size = list->hdlprop->max_tablesize;
  if (list->hdlprop->list_type == LM_DHASH) {
    const auto* info = static_cast<DHashInfo*>(list->list_state);
    EXPECT_EQ(info->table_size, size);
    for (const auto& slot : std::span(info->table, static_cast<std::size_t>(size)))
      if (slot.state != LM_STATE_READY) see(slot);
  } else if (list->hdlprop->list_type == LM_CHASH) {
    const auto* info = static_cast<CHashInfo*>(list->list_state);
    EXPECT_EQ(info->table_size, size);
    for (CS_INT i = 0; i < size; ++i) walk(info->table[i]);
  } else {
    const auto* info = static_cast<DLinkInfo*>(list->list_state);
    EXPECT_EQ(info->tail, walk(info->head));
    return found;
  }
  std::ranges::sort(found, {}, [](char letter) { return std::tolower(letter); });
  return found;
}

struct Script {
  CS_INT type, table_size;
  const char* steps;
};

// Each step is an operation, its key, the data given or handed out, whether it succeeds (=) or not
// (!), and the contents afterwards; 's' sets the size of a table. The n-th allocation fails: what
// needs it changes nothing and is done again. Returns whether there was one.
bool follow(const Script& script, CS_INT pool, std::size_t n) {
  static char letters[] = "abcdefghijklmnopqrstuvwxyz";
  constexpr std::string_view kOps = "idfrFL.np...BA";
  const hosts::Failing failing(n);
  const Fixture fixture(script.type, script.table_size, pool);
  LM_HANDLE* const list = fixture.list;
  EXPECT_EQ(failing.reached() ? CS_MEM_ERROR : CS_SUCCEED, fixture.code);
  if (list == nullptr) return true;
  Text before;
  std::istringstream steps(script.steps);
  for (Text step; steps >> step; before = step.substr(4)) {
    SCOPED_TRACE(step);
    const bool takes = Text("irBAs").find(step[0]) != Text::npos, good = step[3] == '=';
    const auto letter = [&](char of) { return of == '.' ? nullptr : &letters[of - 'a']; };
    void* out = nullptr;
    CS_INT length = -1;
    const auto code = static_cast<CS_INT>(20 + kOps.find(step[0]));
    void* const data = takes ? letter(step[2]) : static_cast<void*>(&out);
    const auto apply = [&] {
      return step[0] == 's' ? set(list, LM_PROP_MAX_TABLESIZE, step[1] - '0')
                            : lm_list_op(list, code, letter(step[1]), 1, data, &length);
    };
    const bool reached_before = failing.reached();
    CS_RETCODE result = apply();
    if (failing.reached() != reached_before) {
      EXPECT_EQ(CS_MEM_ERROR, result);
      EXPECT_EQ(before, contents(list));
      EXPECT_EQ(list->hdlprop->handle_load, std::ssize(before));
      result = apply();
    }
    const bool fails = step[0] == 'i' || step[0] == 's';
    EXPECT_EQ(good ? +CS_SUCCEED : fails ? +CS_FAIL : +LM_NOTFOUND, result);
    EXPECT_EQ(takes ? nullptr : letter(step[2]), out);
    EXPECT_EQ(!takes && good ? static_cast<CS_INT>(sizeof out) : -1, length);
    EXPECT_EQ(step.substr(4), contents(list));
    EXPECT_EQ(list->hdlprop->handle_load, static_cast<CS_INT>(step.size() - 4));
    EXPECT_LE(list->free_nodes, std::max(0, list->hdlprop->max_poolsize));
  }
  return failing.reached();
}

TEST(Lists, FollowTheirScripts) {
  const Script rows[] = {
      {LM_DLINK, 7,
       "n..! p..! F..! L..! d..! f..! r.x! iaa=a ibb=ab n.a=Ab n.b=aB n..!aB p.a=Ab p..!Ab fbb=aB "
       "fc.!aB f.b=aB rac=Cb r.d=Db fad=Db rex!Db B.e=eDb A.g=eDgb dbb=eDg d.d=eg d..!eg r.x!eg "
       "f..!eg B.h=heg A.k=hegk p.k=hegK A.m=hegKm p.g=heGkm p.e=hEgkm iaa=hEgkma iax=hEgkmax "
       "faa=hegkmAx daa=hegkmx fax=hegkmX d.x=hegkm F.h=Hegkm B.n=nHegkm d.h=negkm n.n=Negkm "
       "d.n=egkm da.!egkm L.m=egkM p.k=egKm d.k=egm n.e=Egm d.e=gm L.m=gM d.m=g L.g=G d.g= F..!"},
      {LM_QUEUE, 7,
       "d..! F..! iaa=a ibb=ab icc=abc fbb=aBc dca=Bc rbx=Xc n.c=xC p.x=Xc d.x=c n.c=C "
       "idd=Cd L.d=cD dzc=D d.d= d..!"},
      {LM_STACK, 7,
       "d..! L..! iaa=a ibb=ba icc=cba F.c=Cba n.b=cBa r.x=cXa fbx=cXa d.c=Xa L.a=xA n..!xA "
       "p.x=Xa d.x=a idd=da dzd=a"},
      {LM_CHASH, 2,
       "d..! f..! r.x! iaa=a ibb=ab icc=abc idd=abcd iee=abcde fcc=abCde f.c=abCde daa=bCde "
       "fa.!bCde rax!bCde rbx=cdeX r.b=Bcde s1.=bcde f..!bcde fbb=Bcde fee=bcdE d.e=bcd d..!bcd "
       "iee=bcde s9.=bcde fee=bcdE dcc=bdE dbb=dE fdd=De d.d=e s3.=e dee= de.!"},
      {LM_DHASH, 3,
       "d..! f..! r.x! iaa=a ibb=ab icc=abc idd!abc fd.!abc fcc=abC f.c=abC s2.!abC daa=bC fbb=Bc "
       "fa.!Bc idd=Bcd rdx=bcX r.d=bcD s7.=bcd d..!bcd iaa=abcd iee=abcde fee=abcdE fbb=aBcde "
       "d.b=acde s4.=acde ibb!acde fcc=aCde faa=Acde dcc=Ade ibb=Abde dbb=Ade s3.=ade fdd=aDe"},
  };
  for (const Script& row : rows) {
    for (const CS_INT pool : {0, 1, 3}) {
      for (std::size_t n = 1; !HasFailure(); ++n) {
        SCOPED_TRACE(testing::Message() << row.type << ", pool " << pool << ", allocation " << n);
        if (!follow(row, pool, n)) break;
      }
    }
  }
}

TEST(OpenAddressing, ProbesFromHomePlusIncrement) {
  Fixture fixture(LM_DHASH, 11);
  const auto* info = static_cast<DHashInfo*>(fixture.list->list_state);
  std::set<CS_INT> taken;
  char keys[] = "abcdefghijk";
  for (char& key : std::span(keys, 11)) {
    CS_INT slot = (lm__api_key_to_hash(&key, 1, 11) + lm__api_key_to_hash2(&key, 1, 11)) % 11;
    while (!taken.insert(slot).second) slot = (slot + 1) % 11;
    ASSERT_EQ(CS_SUCCEED, op(fixture.list, LM_OP_INSERT, {&key, 1}, &key));
    EXPECT_EQ(&key, info->table[slot].data);
  }
  EXPECT_EQ(CS_FAIL, op(fixture.list, LM_OP_INSERT, "one more"));
  EXPECT_EQ(CS_FAIL, lm___dhash_rehash(fixture.list, 10));
  EXPECT_EQ(CS_SUCCEED, lm___dhash_rehash(fixture.list, 11));
  for (char& gone : std::span(keys, 11)) {
    op(fixture.list, LM_OP_DELETE, {&gone, 1});
    for (char& key : std::span(keys, 11))
      EXPECT_EQ(&key == &gone, op(fixture.list, LM_OP_FIND, {&key, 1}) == LM_NOTFOUND)
          << gone << key;
    op(fixture.list, LM_OP_INSERT, {&gone, 1}, &gone);
  }
}

// The sought key's size counts, the stored one's does not, in neither direction.
TEST(OpenAddressing, MatchesByTheSoughtKeysSize) {
  Fixture fixture(LM_DHASH, 5);
  int data = 0;
  lm_list_op(fixture.list, LM_OP_INSERT, "prefix and more", 6, &data, nullptr);
  for (const std::string_view found : {"", "pre", "prefix", "prefix and"})
    EXPECT_EQ(CS_SUCCEED, op(fixture.list, LM_OP_FIND, found)) << found;
  for (const std::string_view absent : {"p-", "prefixes", "prefix and more still"})
    EXPECT_EQ(LM_NOTFOUND, op(fixture.list, LM_OP_FIND, absent)) << absent;
}

CS_INT same_first_byte(const CS_VOID* element_key, const CS_VOID* key, CS_INT) {
  return *static_cast<const char*>(element_key) != *static_cast<const char*>(key);
}

TEST(ListKeys, CompareFunctionAndElementsWithoutKey) {
  for (const CS_INT type : {LM_DLINK, LM_CHASH, LM_DHASH}) {
    Fixture fixture(type);
    int data[2];
    if (type == LM_DLINK) op(fixture.list, LM_OP_INSERT, &data[0]);
    op(fixture.list, LM_OP_INSERT, "b", &data[1]);
    set_function(fixture.list, LM_PROP_COMP_FUNC, same_first_byte);
    void* found = nullptr;
    EXPECT_EQ(type == LM_DLINK ? CS_RETCODE{CS_SUCCEED} : CS_RETCODE{LM_NOTFOUND},
              op(fixture.list, LM_OP_FIND, "bcd", &found));
    EXPECT_EQ(CS_SUCCEED, op(fixture.list, LM_OP_FIND, "b", &found));
    EXPECT_EQ(&data[1], found);
  }
}

// A host's own hash functions say where elements lie, the sum of both in an open table.
TEST(ListHash, AsksTheFunctionsOfATable) {
  const LM_HASH_FUNC last_slot = [](const CS_VOID*, CS_INT, CS_INT size) { return size - 1; };
  const Fixture open(LM_DHASH), chained(LM_CHASH);
  auto* slots = static_cast<DHashInfo*>(open.list->list_state);
  auto* chains = static_cast<CHashInfo*>(chained.list->list_state);
  slots->home_addr_hfunc = slots->incr_hfunc = chains->home_addr_hfunc = last_slot;
  int data = 0;
  for (LM_HANDLE* list : {open.list, chained.list}) {
    EXPECT_EQ(CS_SUCCEED, op(list, LM_OP_INSERT, "key", &data));
    EXPECT_EQ(CS_SUCCEED, op(list, LM_OP_FIND, "key"));
  }
  EXPECT_EQ(&data, slots->table[5].data);
  EXPECT_EQ(&data, chains->table[6]->data);
}

TEST(NodePool, IsFilledBoundedAndTrimmed) {
  const Fixture fixture(LM_CHASH, 7, 3);
  LM_HANDLE* list = fixture.list;
  const std::size_t filled = hosts::live_blocks();
  for (const char* const key : {"a", "b", "c", "d"}) op(list, LM_OP_INSERT, key);
  EXPECT_EQ(filled + 1, hosts::live_blocks());
  for (const char* const key : {"a", "b", "c", "d"}) op(list, LM_OP_DELETE, key);
  EXPECT_EQ(LM_STATE_POOLED, list->free_DLN_list->state);
  EXPECT_EQ(filled, hosts::live_blocks());
  set(list, LM_PROP_MAX_POOLSIZE, 1);
  EXPECT_EQ(filled - 2, hosts::live_blocks());

  const Fixture no_pool(LM_DHASH, 7, 3);
  EXPECT_EQ(0, no_pool.list->hdlprop->max_poolsize);
  EXPECT_EQ(CS_SUCCEED, set(no_pool.list, LM_PROP_MAX_POOLSIZE, 5));
  EXPECT_EQ(0, no_pool.list->hdlprop->max_poolsize);
}

// Prints an element; with CS_FAIL it asks for no more.
template <CS_RETCODE Result>
CS_RETCODE print_number(CS_VOID* data) {
  return comn_debug_print("<%d>", *static_cast<int*>(data)), Result;
}

Text printed(auto action) {
  testing::internal::CaptureStdout();
  action();
  return testing::internal::GetCapturedStdout();
}

TEST(ListPrint, HeadingsAndStops) {
  static int numbers[] = {1, 2};
  const auto all_of = reinterpret_cast<void*>(print_number<CS_SUCCEED>);
  const auto one = reinterpret_cast<void*>(print_number<CS_FAIL>);
  const Text empty = "\n***Chain empty***\n";
  for (const CS_INT type : {LM_DLINK, LM_CHASH, LM_DHASH, LM_QUEUE, LM_STACK}) {
    SCOPED_TRACE(type);
    Fixture fixture(type, 3);
    LM_HANDLE* list = fixture.list;
    for (const CS_INT code : {LM_OP_PRINT, LM_OP_PRINT_ALL}) EXPECT_EQ(CS_FAIL, op(list, code));
    EXPECT_EQ(CS_SUCCEED, op(list, LM_OP_NONE));
    set_function(list, LM_PROP_PRINT_FUNC, print_number<CS_SUCCEED>);
    EXPECT_EQ(type == LM_CHASH ? empty + empty + empty : empty,
              printed([&] { EXPECT_EQ(CS_SUCCEED, op(list, LM_OP_PRINT_ALL)); }));
    EXPECT_EQ("\nNULL\n", printed([&] { EXPECT_EQ(LM_NOTFOUND, op(list, LM_OP_PRINT)); }));
    EXPECT_EQ("", printed([&] { EXPECT_EQ(LM_NOTFOUND, op(list, LM_OP_PRINT, "no")); }));

    op(list, LM_OP_INSERT, "one", &numbers[0]);
    if (type != LM_CHASH) {
      EXPECT_EQ("\nKeys:\none\nData:\n<1>", printed([&] { op(list, LM_OP_PRINT_ALL); }));
    }
    op(list, LM_OP_INSERT, "two", &numbers[1]);
    Text all = printed([&] { EXPECT_EQ(CS_SUCCEED, op(list, LM_OP_PRINT_DATA, all_of)); });
    if (type != LM_DLINK && type != LM_QUEUE) std::ranges::sort(all);
    EXPECT_EQ(type != LM_DLINK && type != LM_QUEUE ? "12<<>>" : "<1><2>", all);
    EXPECT_EQ(3U, printed([&] { EXPECT_EQ(CS_SUCCEED, op(list, LM_OP_PRINT_DATA, one)); }).size());
    EXPECT_EQ("<2>", printed([&] { EXPECT_EQ(CS_SUCCEED, op(list, LM_OP_PRINT, "two")); }));
  }
}

struct PropertyRow {
  CS_INT property;
  CS_RETCODE change;  // what a set or clear returns
  std::intptr_t initial;
  bool function = false;
  bool address = function;
};

// Integers are set to 9, functions to an address, which is as long as a pointer.
void check_properties(std::initializer_list<PropertyRow> rows, auto call) {
  static CS_INT nine = 9;
  for (const PropertyRow& row : rows) {
    const auto set = row.function ? reinterpret_cast<std::intptr_t>(&nine) : 9;
    for (const CS_INT action : {CS_CLEAR, CS_SET, CS_CLEAR}) {
      std::intptr_t value = 0;
      CS_INT length = 0;
      EXPECT_EQ(row.change, call(action, row.property, &nine, 4, nullptr)) << row.property;
      EXPECT_EQ(CS_SUCCEED, call(CS_GET, row.property, &value, 4, &length));
      EXPECT_EQ(action == CS_SET && row.change == CS_SUCCEED ? set : row.initial, value);
      EXPECT_EQ(row.address ? sizeof(void*) : sizeof(CS_INT), length) << row.property;
    }
  }
}

TEST(ListProperties, GetSetClear) {
  Fixture fixture(LM_CHASH, 7, 2);
  const auto of_handle = std::bind_front(lm_list_prop, fixture.list);
  const auto of_context = std::bind_front(lm_property, fixture.context);
  const auto context = reinterpret_cast<std::intptr_t>(fixture.context);
  const auto list = reinterpret_cast<std::intptr_t>(fixture.list);
  check_properties({{LM_PROP_LIST_TYPE, CS_FAIL, LM_CHASH},
                    {LM_PROP_MAX_TABLESIZE, CS_SUCCEED, 7},
                    {LM_PROP_MAX_POOLSIZE, CS_SUCCEED, 2},
                    {LM_PROP_HANDLE_LOAD, CS_FAIL, 0},
                    {LM_PROP_CONTEXT, CS_FAIL, context, false, true},
                    {LM_PROP_PRINT_FUNC, CS_SUCCEED, 0, true},
                    {LM_PROP_COMP_FUNC, CS_SUCCEED, 0, true}},
                   of_handle);
  check_properties({{LM_CTX_LIST_TYPE, CS_SUCCEED, LM_DLINK},
                    {LM_CTX_MAX_TABLESIZE, CS_SUCCEED, 10},
                    {LM_CTX_MAX_POOLSIZE, CS_SUCCEED, 0},
                    {LM_CTX_VERSION, CS_FAIL, LM_MIN_VERSION},
                    {LM_CTX_CONTEXT_LOAD, CS_FAIL, 1},
                    {LM_CTX_CUR_HANDLEADDR, CS_FAIL, list, false, true}},
                   of_context);

  const std::size_t asked = hosts::allocations();
  if (sizeof(void*) == 4) {
    EXPECT_EQ(CS_MEM_ERROR, set(fixture.list, LM_PROP_MAX_TABLESIZE, INT32_MAX));
    EXPECT_EQ(asked + 1, hosts::allocations()) << "not for what no address space holds";
  }
  LM_HANDLE* plain = nullptr;
  lm_list_alloc(fixture.context, CS_UNUSED, "four", CS_NULLTERM, &plain);
  EXPECT_EQ(LM_DLINK, plain->hdlprop->list_type);
  EXPECT_EQ(CS_FAIL, set(plain, LM_PROP_MAX_TABLESIZE, 9));
  char name[6] = ".....";
  CS_INT length = -1;
  EXPECT_EQ(CS_FAIL, of_context(CS_GET, LM_CTX_CUR_HANDLENAME, name, 4, &length));
  EXPECT_STREQ(".....", name);
  EXPECT_EQ(CS_SUCCEED, of_context(CS_GET, LM_CTX_CUR_HANDLENAME, name, 5, &length));
  EXPECT_EQ(5, length) << "the NUL counts";
  EXPECT_STREQ("four", name);
  EXPECT_EQ(CS_SUCCEED, of_handle(CS_GET, LM_PROP_HANDLE_NAME, name, 3, &length));
  EXPECT_EQ(3, length);
  EXPECT_STREQ("oner", name);
  EXPECT_EQ(CS_SUCCEED, lm_list_drop(plain));
  EXPECT_EQ(nullptr, fixture.context->cxtprop->cur_handleaddr);
  EXPECT_EQ(CS_SUCCEED, of_context(CS_GET, LM_CTX_CUR_HANDLENAME, name, 4, &length));
  EXPECT_EQ(0, length);

  EXPECT_EQ(CS_SUCCEED, lm_list_alloc(fixture.context, LM_QUEUE, "", 0, &plain));
  EXPECT_EQ(CS_SUCCEED, lm_list_drop(fixture.list)) << "not the newest one";
  EXPECT_EQ(plain, fixture.context->first_handle);
  EXPECT_EQ(CS_FAIL, lm_list_alloc(nullptr, LM_QUEUE, "x", 1, &plain));
  EXPECT_EQ(CS_FAIL, lm_list_alloc(fixture.context, 17, "x", 1, &plain));
  EXPECT_EQ(CS_FAIL, op(nullptr, LM_OP_NONE));
}

TEST(ListDeathTest, Stops) {
  using stops::kAssertion, stops::kPointer;
  LM_CONTEXT* none = nullptr;
  LM_HANDLE* made = nullptr;
  Fixture table(LM_DHASH), single(LM_DHASH, 1), queue(LM_QUEUE), chained(LM_CHASH);
  auto& open_info = *static_cast<DHashInfo*>(table.list->list_state);
  auto& chain_info = *static_cast<CHashInfo*>(chained.list->list_state);
  const auto alloc = [&](LM_CONTEXT* context, CS_INT type) {
    lm_list_alloc(context, type, "x", 1, &made);
  };
  const auto of_size = [](const CS_VOID*, CS_INT, CS_INT size) { return size; };
  stops::expect({
      STOP(kAssertion, lm_initlm(LM_MIN_VERSION - 1, "x", 1, &none)),
      STOP(kPointer, lm_initlm(LM_MIN_VERSION, nullptr, 1, &none)),
      STOP(kAssertion, lm_initlm(LM_MIN_VERSION, "x", -1, &none)),
      STOP(kAssertion, queue.context->state = 12, lm_exit(queue.context)),
      STOP(kAssertion, queue.list->state = 12, lm_list_drop(queue.list)),
      STOP(kAssertion, queue.context->state = 12, alloc(queue.context, 11)),
      STOP(kAssertion, queue.list->state = 12, op(queue.list, LM_OP_NONE)),
      STOP(kAssertion, op(table.list, LM_OP_FIRST, "x")),
      STOP(kAssertion, op(table.list, LM_OP_INSERT_AFTER, "x")),
      STOP(kAssertion, op(queue.list, LM_OP_INSERT_BEFORE)),
      STOP(kAssertion, op(table.list, LM_OP_INSERT)),
      STOP(kAssertion, queue.list->free_nodes = 1, op(queue.list, LM_OP_INSERT)),
      STOP(kAssertion, lm_list_op(table.list, LM_OP_FIND, "x", -2, nullptr, nullptr)),
      STOP(kAssertion, open_info.table_size = 0, op(table.list, LM_OP_FIND, "x")),
      STOP(kAssertion, chain_info.table_size = 0, op(chained.list, LM_OP_FIND, "x")),
      STOP(kAssertion, chain_info.home_addr_hfunc = of_size, op(chained.list, LM_OP_INSERT, "key")),
      STOP(kPointer, op(table.list, LM_OP_PRINT_DATA)),
      STOP(kAssertion, set(table.list, LM_PROP_MAX_TABLESIZE, 0)),
      STOP(kAssertion, lm___dhash_rehash(queue.list, 9)),
      STOP(kAssertion, lm__api_key_to_hash("x", 1, 0)),
      STOP(kAssertion, lm__api_key_to_hash2("x", 1, 0)),
      STOP(kAssertion, lm___api_key_to_uint("x", -1)),
      STOP(kPointer, lm___api_key_to_uint(nullptr, 1)),
  });
  for (const CS_INT type : {12, 20}) stops::expect({STOP(kAssertion, alloc(table.context, type))});
  for (const CS_INT code : {19, 34}) stops::expect({STOP(kAssertion, op(table.list, code, "x"))});
  for (const auto& [action, code] : {std::pair{+CS_GET, 0}, {CS_SET, 0}, {CS_GET, 8}, {36, 1}})
    EXPECT_DEATH(lm_property(table.context, action, code, &none, 4, nullptr), "assertion") << code;
  for (const auto& [action, code] : {std::pair{+CS_GET, 0}, {CS_SET, 4}, {CS_GET, 13}, {32, 1}})
    EXPECT_DEATH(lm_list_prop(table.list, action, code, &none, 4, nullptr), "assertion") << code;
  // A table of one slot has no increment: the division by zero is its end.
  EXPECT_DEATH(op(single.list, LM_OP_INSERT, "x"), "");
}

}  // namespace
