// Hash tables of string keys: insert, find and delete, chained and open addressing, against
// std::unordered_map and uthash, and the linked list against std::list. Every table has a size that
// suits the load; keys are looked up in an order that is not that of insertion.
#include <algorithm>
#include <list>
#include <map>
#include <random>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "bench.h"
#include "comnlib/list.h"

// uthash is made for C: in C++ its casts and comparisons are warned of.
#pragma GCC diagnostic ignored "-Wconversion"
#pragma GCC diagnostic ignored "-Wsign-conversion"
#pragma GCC diagnostic ignored "-Wold-style-cast"
#include <uthash.h>
#if defined(BENCH_ABSL)
#include <absl/container/flat_hash_map.h>
#endif

namespace {

using namespace bench;

struct Keys {
  std::vector<std::string> inserted;
  std::vector<std::string> shuffled;
  std::vector<std::string> absent;

  explicit Keys(std::int64_t count) {
    for (std::int64_t i = 0; i < count; ++i) {
      inserted.push_back("customer." + std::to_string(i * 7919 % 1000003));
      absent.push_back("supplier." + std::to_string(i));
    }
    shuffled = inserted;
    std::shuffle(shuffled.begin(), shuffled.end(), std::mt19937(1));
  }
};

const Keys& keys(const benchmark::State& state) {
  static std::map<std::int64_t, Keys> all;
  return all.try_emplace(state.range(0), state.range(0)).first->second;
}

// The next prime after twice the number of keys: load one half.
CS_INT table_size(std::size_t count) {
  const auto is_prime = [](std::size_t number) {
    for (std::size_t factor = 2; factor * factor <= number; ++factor)
      if (number % factor == 0) return false;
    return true;
  };
  std::size_t size = 2 * count + 1;
  while (!is_prime(size)) ++size;
  return static_cast<CS_INT>(size);
}

CS_INT size_of(const std::string& key) {
  return static_cast<CS_INT>(key.size());
}

// This library's lists, made anew for each run.
template <CS_INT kType>
class List {
 public:
  explicit List(std::size_t count) {
    lm_initlm(LM_MIN_VERSION, "bench", CS_NULLTERM, &context_);
    CS_INT size = table_size(count);
    lm_property(context_, CS_SET, LM_CTX_MAX_TABLESIZE, &size, sizeof size, nullptr);
    lm_list_alloc(context_, kType, "table", CS_NULLTERM, &list_);
  }
  ~List() { lm_exit(context_); }

  void insert(const std::string& key) {
    lm_list_op(list_, LM_OP_INSERT, key.data(), size_of(key), this, nullptr);
  }
  bool find(const std::string& key) {
    void* data;
    return lm_list_op(list_, LM_OP_FIND, key.data(), size_of(key), &data, nullptr) == CS_SUCCEED;
  }
  void erase(const std::string& key) {
    lm_list_op(list_, LM_OP_DELETE, key.data(), size_of(key), nullptr, nullptr);
  }

 private:
  LM_CONTEXT* context_ = nullptr;
  LM_HANDLE* list_ = nullptr;
};

template <class Map>
class MapOf {
 public:
  explicit MapOf(std::size_t count) { map_.reserve(count); }
  void insert(const std::string& key) { map_.emplace(key, this); }
  bool find(const std::string& key) { return map_.find(key) != map_.end(); }
  void erase(const std::string& key) { map_.erase(key); }

 private:
  Map map_;
};
using StdMap = MapOf<std::unordered_map<std::string_view, void*>>;

class StdList {
 public:
  explicit StdList(std::size_t) {}
  void insert(const std::string& key) { list_.push_back(key); }
  bool find(const std::string& key) {
    return std::find(list_.begin(), list_.end(), key) != list_.end();
  }

 private:
  std::list<std::string_view> list_;
};

class Uthash {
 public:
  explicit Uthash(std::size_t) {}
  ~Uthash() {
    Entry* entry;
    Entry* next;
    HASH_ITER(hh, table_, entry, next) {
      HASH_DEL(table_, entry);
      delete entry;
    }
  }
  void insert(const std::string& key) {
    auto* entry = new Entry{this, {}};
    HASH_ADD_KEYPTR(hh, table_, key.data(), key.size(), entry);
  }
  bool find(const std::string& key) {
    Entry* entry;
    HASH_FIND(hh, table_, key.data(), key.size(), entry);
    return entry != nullptr;
  }
  void erase(const std::string& key) {
    Entry* entry;
    HASH_FIND(hh, table_, key.data(), key.size(), entry);
    HASH_DEL(table_, entry);
    delete entry;
  }

 private:
  struct Entry {
    void* data;
    UT_hash_handle hh;
  };
  Entry* table_ = nullptr;
};

template <class Table>
void fill(Table& table, const Keys& keys) {
  for (const auto& key : keys.inserted) table.insert(key);
}

template <class Table, std::vector<std::string> Keys::*sought>
void find(benchmark::State& state) {
  const Keys& all = keys(state);
  Table table(all.inserted.size());
  fill(table, all);
  for (auto _ : state)
    for (const auto& key : all.*sought) benchmark::DoNotOptimize(table.find(key));
  items(state, all.inserted.size());
}

// As many keys of a list as show the mean of all, evenly spread.
template <class Linked>
void find_spread(benchmark::State& state) {
  constexpr std::size_t kSpread = 16;
  const Keys& all = keys(state);
  Linked list(all.inserted.size());
  fill(list, all);
  for (auto _ : state)
    for (std::size_t i = 1; i < 2 * kSpread; i += 2)
      benchmark::DoNotOptimize(list.find(all.inserted[i * all.inserted.size() / (2 * kSpread)]));
  items(state, kSpread);
}

// Fills and empties; what remains of a run is the table itself.
template <class Table>
void insert_and_delete(benchmark::State& state) {
  const Keys& all = keys(state);
  Table table(all.inserted.size());
  for (auto _ : state) {
    fill(table, all);
    for (const auto& key : all.shuffled) table.erase(key);
  }
  items(state, all.inserted.size());
}

using Function = void (*)(benchmark::State&);

void measure_at_elements(const std::string& name, Function function) {
  measure("list/" + name, function)->ArgName("elements")->Arg(10'000);
}

void curve_over_elements(const std::string& name, Function function) {
  measure("size/list/" + name, function)->ArgName("elements")->Apply(decades<1'000'000>);
}

template <class Table>
void measure_table(const std::string& who) {
  measure_at_elements("find/" + who, find<Table, &Keys::shuffled>);
  measure_at_elements("insert and delete/" + who, insert_and_delete<Table>);
  curve_over_elements("find in a table/" + who, find<Table, &Keys::shuffled>);
}

const Registration registered([] {
  measure_table<List<LM_CHASH>>("comnlib chained");
  measure_table<List<LM_DHASH>>("comnlib open addressing");
  measure_table<StdMap>("std::unordered_map");
  measure_table<Uthash>("uthash");
#if defined(BENCH_ABSL)
  measure_table<MapOf<absl::flat_hash_map<std::string_view, void*>>>("absl::flat_hash_map");
#endif
  measure_at_elements("find, key absent/comnlib chained", find<List<LM_CHASH>, &Keys::absent>);
  measure_at_elements("find, key absent/std::unordered_map", find<StdMap, &Keys::absent>);
  measure_at_elements("find, key absent/uthash", find<Uthash, &Keys::absent>);
  curve_over_elements("find in a linked list/comnlib", find_spread<List<LM_DLINK>>);
  curve_over_elements("find in a linked list/std::list", find_spread<StdList>);
});

}  // namespace
