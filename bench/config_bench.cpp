// A generated configuration of sections of ten entries: loading it, against inih, which stores
// nothing, and libconfuse, which reads the same data in its own syntax; and looking entries up in
// it.
#include <confuse.h>
#include <ini.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "bench.h"
#include "comnlib/config.h"

namespace {

using namespace bench;

constexpr int kEntries = 10;

std::string section_name(int number) {
  return "server." + std::to_string(number);
}

std::string entry_name(int number) {
  static const char* const kNames[kEntries] = {"host",     "port",    "protocol", "charset",
                                               "language", "timeout", "retries",  "packet",
                                               "user",     "comment"};
  return kNames[number];
}

std::string value_of(int section, int entry) {
  if (entry == kEntries - 1)
    return "\"a text of several words, number " + std::to_string(section) + "\"";
  return "value" + std::to_string(section * kEntries + entry);
}

// The files of one number of sections, for as long as the process runs.
class Files {
 public:
  explicit Files(int count) : sections(count) {
    std::string name = (std::filesystem::temp_directory_path() / "comnlib-XXXXXX").string();
    directory_ = mkdtemp(name.data());
    std::ofstream sectioned(ini());
    std::ofstream braced(confuse());
    for (int s = 0; s < sections; ++s) {
      sectioned << "[" << section_name(s) << "]\n";
      braced << "section \"" << section_name(s) << "\" {\n";
      for (int e = 0; e < kEntries; ++e) {
        sectioned << entry_name(e) << " = " << value_of(s, e) << "\n";
        braced << entry_name(e) << " = " << value_of(s, e) << "\n";
      }
      sectioned << "\n";
      braced << "}\n";
    }
  }
  ~Files() { std::filesystem::remove_all(directory_); }
  std::string ini() const { return directory_ / "bench.cfg"; }
  std::string confuse() const { return directory_ / "bench.conf"; }

  const int sections;

 private:
  std::filesystem::path directory_;
};

const Files& files(const benchmark::State& state) {
  static std::map<std::int64_t, Files> all;
  const std::int64_t entries = state.range(0);
  return all.try_emplace(entries, static_cast<int>(entries / kEntries)).first->second;
}

void per_entry(benchmark::State& state) {
  items(state, static_cast<std::size_t>(state.range(0)));
}

void load(benchmark::State& state) {
  const std::string path = files(state).ini();
  CS_CONTEXT context{};
  for (auto _ : state) {
    if (comn_init_cfg(&context, path.c_str()) != CS_SUCCEED) return state.SkipWithError("load");
    comn_drop_cfg(&context);
  }
  per_entry(state);
}

void load_inih(benchmark::State& state) {
  const std::string path = files(state).ini();
  int entries = 0;
  const auto count = [](void* user, const char*, const char*, const char*) {
    return ++*static_cast<int*>(user);
  };
  for (auto _ : state)
    if (ini_parse(path.c_str(), count, &entries) != 0) return state.SkipWithError("ini_parse");
  per_entry(state);
}

void load_confuse(benchmark::State& state) {
  const std::string path = files(state).confuse();
  std::vector<std::string> names;
  for (int e = 0; e < kEntries; ++e) names.push_back(entry_name(e));
  std::vector<cfg_opt_t> entries;
  for (const auto& name : names) entries.push_back(CFG_STR(name.c_str(), nullptr, CFGF_NONE));
  entries.push_back(CFG_END());
  cfg_opt_t top[] = {CFG_SEC("section", entries.data(), CFGF_MULTI | CFGF_TITLE), CFG_END()};
  for (auto _ : state) {
    cfg_t* parsed = cfg_init(top, CFGF_NONE);
    if (cfg_parse(parsed, path.c_str()) != CFG_SUCCESS) return state.SkipWithError("cfg_parse");
    cfg_free(parsed);
  }
  per_entry(state);
}

void look_up(benchmark::State& state) {
  CS_CONTEXT context{};
  comn_init_cfg(&context, files(state).ini().c_str());
  std::vector<std::pair<std::string, std::string>> names;
  for (int s = 0; s < files(state).sections; ++s)
    names.emplace_back(section_name(s), entry_name(s % kEntries));
  std::shuffle(names.begin(), names.end(), std::mt19937(1));
  std::size_t at = 0;
  CS_CHAR value[64];
  CS_INT length;
  for (auto _ : state) {
    const auto& [section, entry] = names[at];
    if (++at == names.size()) at = 0;
    if (comn_get_cfg(&context, section.c_str(), entry.c_str(), value, sizeof value, &length) !=
        CS_SUCCEED)
      return state.SkipWithError("comn_get_cfg");
    benchmark::DoNotOptimize(value);
  }
  comn_drop_cfg(&context);
}

void measure_at_entries(const std::string& name, void (*function)(benchmark::State&)) {
  measure("configuration/" + name, function)->ArgName("entries")->Arg(100'000);
  measure("size/configuration/" + name, function)->ArgName("entries")->Apply(decades<100'000>);
}

const Registration registered([] {
  measure_at_entries("load, an entry/comnlib", load);
  measure_at_entries("load, an entry/inih", load_inih);
  measure_at_entries("load, an entry/libconfuse", load_confuse);
  measure_at_entries("look an entry up/comnlib", look_up);
});

}  // namespace
