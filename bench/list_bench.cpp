// Hash tables of 10,000 string keys: insert, find and delete, chained and open addressing, against
// std::unordered_map and uthash. Every table has a size that suits the load; keys are looked up in
// an order that is not that of insertion.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "comnlib/list.h"

// uthash is made for C: in C++ its casts and comparisons are warned of.
#pragma GCC diagnostic ignored "-Wconversion"
#pragma GCC diagnostic ignored "-Wsign-conversion"
#pragma GCC diagnostic ignored "-Wold-style-cast"
#include <uthash.h>

namespace {

constexpr std::size_t kKeys = 10000;
constexpr CS_INT kTableSize = 20011;  // prime, load one half

struct Keys {
  std::vector<std::string> inserted;
  std::vector<std::string> shuffled;
  std::vector<std::string> absent;

  Keys() {
    for (std::size_t i = 0; i < kKeys; ++i) {
      inserted.push_back("customer." + std::to_string(i * 7919 % 1000003));
      absent.push_back("supplier." + std::to_string(i));
    }
    shuffled = inserted;
    std::shuffle(shuffled.begin(), shuffled.end(), std::mt19937(1));
  }
};

const Keys& keys() {
  static const Keys all;
  return all;
}

CS_INT size_of(const std::string& key) {
  return static_cast<CS_INT>(key.size());
}

// This library's tables, made anew for each run.
template <CS_INT kType>
class List {
 public:
  List() {
    lm_initlm(LM_MIN_VERSION, "bench", CS_NULLTERM, &context_);
    CS_INT size = kTableSize;
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

class StdMap {
 public:
  StdMap() { map_.reserve(kKeys); }
  void insert(const std::string& key) { map_.emplace(key, this); }
  bool find(const std::string& key) { return map_.find(key) != map_.end(); }
  void erase(const std::string& key) { map_.erase(key); }

 private:
  std::unordered_map<std::string_view, void*> map_;
};

class Uthash {
 public:
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
void fill(Table& table) {
  for (const auto& key : keys().inserted) table.insert(key);
}

void per_key(benchmark::State& state) {
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(kKeys));
}

template <class Table>
void find_present(benchmark::State& state) {
  Table table;
  fill(table);
  for (auto _ : state)
    for (const auto& key : keys().shuffled) benchmark::DoNotOptimize(table.find(key));
  per_key(state);
}

template <class Table>
void find_absent(benchmark::State& state) {
  Table table;
  fill(table);
  for (auto _ : state)
    for (const auto& key : keys().absent) benchmark::DoNotOptimize(table.find(key));
  per_key(state);
}

// Fills and empties; what remains of a run is the table itself.
template <class Table>
void insert_and_delete(benchmark::State& state) {
  Table table;
  for (auto _ : state) {
    fill(table);
    for (const auto& key : keys().shuffled) table.erase(key);
  }
  per_key(state);
}

using Chained = List<LM_CHASH>;
using OpenAddressing = List<LM_DHASH>;

BENCHMARK(find_present<Chained>)->Name("list/find/chained");
BENCHMARK(find_present<OpenAddressing>)->Name("list/find/open_addressing");
BENCHMARK(find_present<StdMap>)->Name("list/find/unordered_map");
BENCHMARK(find_present<Uthash>)->Name("list/find/uthash");
BENCHMARK(find_absent<Chained>)->Name("list/find_absent/chained");
BENCHMARK(find_absent<StdMap>)->Name("list/find_absent/unordered_map");
BENCHMARK(find_absent<Uthash>)->Name("list/find_absent/uthash");
BENCHMARK(insert_and_delete<Chained>)->Name("list/insert_delete/chained");
BENCHMARK(insert_and_delete<OpenAddressing>)->Name("list/insert_delete/open_addressing");
BENCHMARK(insert_and_delete<StdMap>)->Name("list/insert_delete/unordered_map");
BENCHMARK(insert_and_delete<Uthash>)->Name("list/insert_delete/uthash");

}  // namespace
