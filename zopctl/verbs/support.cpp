// zopctl support: one file for those who help. Each part is this program run for a verb, so that a
// part that fails is recorded and ends nothing.
#include <dlfcn.h>
#include <fmt/chrono.h>
#include <fmt/format.h>

#include <chrono>
#include <filesystem>

#include "zopctl/host/child_program.h"
#include "zopctl/host/host_calls.h"
#include "zopctl/host/signals.h"
#include "zopctl/text/archive.h"
#include "zopctl/text/counted.h"
#include "zopctl/text/failure.h"
#include "zopctl/text/printable.h"
#include "zopctl/text/redacted_text.h"
#include "zopctl/text/replace_file.h"
#include "zopctl/text/sha256.h"
#include "zopctl/verbs/verbs.h"

namespace zopctl {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

constexpr char REMOVED[] =
    "PINs, identities, phone numbers, messages, profiles, addresses, places, NV items, memory";

namespace {
struct Part {
  const char* name;
  std::vector<std::string> words;
};

// What is in the archive so far.
struct Gathering {
  Archive archive;
  std::string folder;
  Json parts = Json::array();
  std::vector<std::string> failed;

  void add(const std::string& name, std::string_view content) {
    if (!content.empty()) archive.add(folder + "/" + name, content);
  }
};
}  // namespace

static const Part PARTS[] = {
    {"doctor", {"--capture", CAPTURE_FILE, "--redact", "--log", "all", "doctor"}},
    {"status", {"status"}},
    {"report", {"report", "--wait"}},
};

static std::string path_of_module(const ModuleLibrary& m) {
  Dl_info info = {};
  auto address = reinterpret_cast<void*>(m.vurn_open);
  return dladdr(address, &info) != 0 ? fs::weakly_canonical(info.dli_fname).string() : "";
}

// A text that is no JSON is an error of the program; it may say anything.
static std::string as_redacted_json(const std::string& output) {
  Json value = Json::parse(output, nullptr, false);
  if (value.is_discarded()) return redacted(std::string_view(printable(output, "\n")));
  return printable_json(redacted(value), 2) + "\n";
}

static void gather_part(Gathering& all, const ModuleLibrary& m, const Part& part) {
  std::vector<std::string> words = {"--json", "--device", mapped_device(), "--library",
                                    path_of_module(m)};
  words.insert(words.end(), part.words.begin(), part.words.end());
  ChildResult result = run_again(words);
  std::string name = part.name;
  all.add(name + ".json", as_redacted_json(result.output));
  all.add(name + ".log", redacted(std::string_view(printable(result.errors, "\n"))));
  all.add(name + ".pcapng", result.capture);
  all.parts.push_back({{"part", name}, {"exit_code", result.exit_code}});
  if (result.exit_code != 0) all.failed.push_back(name);
}

static Json hashes_of(const std::string& folder) {
  Json files = Json::array();
  std::error_code error;
  std::vector<fs::path> paths;
  for (const auto& entry : fs::directory_iterator(folder, error))
    if (entry.is_regular_file()) paths.push_back(entry.path());
  if (error) throw file_failure("can't read " + folder, error.value());
  std::ranges::sort(paths);
  for (const fs::path& path : paths) {
    check_signals();
    files.push_back({{"file", path.filename().string()},
                     {"size_bytes", fs::file_size(path)},
                     {"sha256", sha256_of(path)}});
  }
  return files;
}

static Json contents(const Gathering& all, const ModuleLibrary& m, const Json& dump) {
  std::string module = path_of_module(m);
  auto now = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
  return {{"time", fmt::format("{:%Y-%m-%dT%H:%M:%SZ}", now)},
          {"zopctl_version", ZOP_VERSION},
          {"module", fs::path(module).filename().string()},
          {"module_sha256", sha256_of(module)},
          {"removed", REMOVED},
          {"parts", all.parts},
          {"dump", dump}};
}

static std::string joined(const std::vector<std::string>& words) {
  return words.empty() ? "none" : fmt::format("{}", fmt::join(words, ", "));
}

static void check_support(const Arguments& arguments) {
  if (arguments.has("--output")) require_file_or_none(arguments.text("--output"));
}

static Findings support(const ModuleLibrary& m, const Arguments& arguments) {
  auto now = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
  std::string folder = fmt::format("zopctl-support-{:%Y%m%d-%H%M%S}", now);
  std::string file = arguments.has("--output") ? arguments.text("--output") : folder + ".tar.gz";
  Json dump = arguments.has("--dump") ? hashes_of(arguments.text("--dump")) : Json();
  Gathering all = {{}, folder, Json::array(), {}};
  for (const Part& part : PARTS) {
    fmt::print(stderr, "zopctl: gathering {} ...\n", part.name);
    gather_part(all, m, part);
  }
  all.add("support.json", printable_json(contents(all, m, dump), 2) + "\n");
  all.archive.write(file);
  const char* holds = "doctor, status and report; a capture and the log of doctor; versions";
  std::string dumps = dump.is_null() ? "" : "; hashes of " + counted(dump.size(), "dump file");
  return one_section(
      "support", "Support",
      {shown("file", "File", file, file), shown("holds", "Holds", holds + dumps, holds + dumps),
       shown("removed", "Removed", REMOVED, REMOVED),
       shown("failed", "Failed parts", Json(all.failed), joined(all.failed))});
}

const Verb SUPPORT = {
    .name = "support",
    .help = "gather what those who help need in one archive, without secrets",
    .need = Session::DEVICE,
    .redacts = true,
    .arguments = {{.name = "--output",
                   .help = "the archive; default zopctl-support-TIME.tar.gz",
                   .short_name = "-o"},
                  {.name = "--dump", .help = "folder of a memory dump, of which it gets hashes"}},
    .check = check_support,
    .run = support};

}  // namespace zopctl
