// zopctl dump: saves the memory regions that a crashed modem offers to files. Nothing in the modem
// changes, so Ctrl-C stops it at any time; files saved so far are kept.
#include <fmt/format.h>

#include <charconv>
#include <filesystem>

#include "zopctl/firmware/firmware.h"
#include "zopctl/firmware/line_follower.h"
#include "zopctl/firmware/progress.h"
#include "zopctl/host/host_calls.h"
#include "zopctl/host/standard_output.h"
#include "zopctl/host/session.h"
#include "zopctl/host/signals.h"
#include "zopctl/text/bytes_text.h"
#include "zopctl/text/failure.h"
#include "zopctl/text/sha256.h"

namespace zopctl {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

// Undoes the module's \xNN escapes of unprintable characters.
static std::string unescaped(const std::string& text) {
  std::string name;
  for (size_t i = 0; i < text.size(); ++i) {
    bool escape = text[i] == '\\' && i + 3 < text.size() && text[i + 1] == 'x';
    unsigned byte = 0;
    if (escape) std::from_chars(text.data() + i + 2, text.data() + i + 4, byte, 16);
    name += escape ? static_cast<char>(byte) : text[i];
    if (escape) i += 3;
  }
  return name;
}

namespace {
class Dump {
 public:
  Dump(const ModuleLibrary& module, bool json)
      : module_(module),
        json_(json),
        progress_(output_.user(), Progress::style_for(output_.user(), json)) {
    watch_line([this](Direction direction, std::span<const uint8_t> piece) {
      return on_line(direction, piece);
    });
  }
  ~Dump() {
    watch_line({});
    module_.zop_close();
  }
  Dump(const Dump&) = delete;
  Dump& operator=(const Dump&) = delete;

  void run() {
    progress_.stage("regions", "asking the modem for its memory regions");
    module_.mem_dump_process();
    take_lines();
    show_summary();
    check_signals();
    if (!complete_) throw Failure(why_incomplete());
  }

 private:
  struct Saved {
    std::string shown;
    fs::path path;
  };

  bool on_line(Direction direction, std::span<const uint8_t> piece) {
    if (has_caught_signal()) return false;
    take_lines();
    if (direction == Direction::FROM_MODEM) {
      follower_.from_modem(piece);
    } else if (auto amount = follower_.to_modem(piece)) {
      progress_.amount(*amount);
    }
    return true;
  }
  void take_lines() {
    for (const std::string& line : output_.new_lines()) take_line(line);
  }
  void take_line(const std::string& line);
  void show_summary();
  std::string why_incomplete() const;

  const ModuleLibrary& module_;
  bool json_;
  ModuleOutput output_;
  Progress progress_;
  DumpFollower follower_;
  std::vector<Saved> files_;
  std::vector<std::string> left_out_;  // the module's reasons for regions it does not save
  std::string error_;                  // the module's line, if it ended the dump early
  bool complete_ = false;
  bool files_are_whole_ = true;
};
}  // namespace

void Dump::take_line(const std::string& line) {
  constexpr std::string_view START = "DUMP_MODE: ", FILE = "FILE=", PERCENT = "PERCENT=",
                             LEFT_OUT = "left out, ";
  if (!line.starts_with(START)) return;
  std::string text = line.substr(START.size());
  if (text.starts_with(FILE)) {
    if (files_.empty()) progress_.stage("save", "saving the modem's memory");
    std::string name = text.substr(FILE.size());
    files_.push_back({name, unescaped(name)});
    follower_.save_next();
  } else if (text == "PERCENT=100") {
    complete_ = true;
  } else if (text.starts_with(LEFT_OUT)) {
    left_out_.push_back(text.substr(LEFT_OUT.size()));
    follower_.skip_next();
    progress_.note(text);
  } else if (!text.starts_with(PERCENT)) {
    error_ = text;
    progress_.note(text);
  }
}

std::string Dump::why_incomplete() const {
  if (!error_.empty()) return error_;
  if (!files_are_whole_) return "the dump failed: the modem no longer answers";
  if (!left_out_.empty())
    return fmt::format("the dump is incomplete, left out: {}", fmt::join(left_out_, "; "));
  return "the modem offers no memory; only one that has crashed into its boot ROM does. "
         "zopctl config error-fatal crashes a modem that is set up for dumps";
}

void Dump::show_summary() {
  if (complete_ && !files_.empty()) progress_.amount(follower_.all_saved());
  if (!files_.empty()) progress_.stage("summary", "SHA-256 of the saved files:");
  Json files = Json::array();
  uint64_t bytes = 0;
  for (size_t i = 0; i < files_.size(); ++i) {
    std::error_code missing;
    uint64_t size = fs::file_size(files_[i].path, missing);
    bool whole =
        !missing && i < follower_.regions().size() && size == follower_.regions()[i].length;
    files_are_whole_ = files_are_whole_ && whole;
    if (missing) continue;
    bytes += size;
    std::string sum = sha256_of(files_[i].path);
    files.push_back({{"file", files_[i].shown}, {"size", size}, {"whole", whole}, {"sha256", sum}});
    if (!json_)
      progress_.note(fmt::format("{}  {}  {}{}", sum, files_[i].shown, size_text(size),
                                 whole ? "" : ", incomplete"));
  }
  progress_.event(
      "summary",
      {{"complete", complete_}, {"bytes", bytes}, {"files", files}, {"left_out", left_out_}});
  if (complete_ && !json_)
    progress_.stage("done", fmt::format("done: {} regions, {}", files.size(), size_text(bytes)));
}

static void enter_folder(const Arguments& arguments) {
  if (!arguments.has("--output")) return;
  const std::string& folder = arguments.text("--output");
  std::error_code error;
  fs::create_directories(folder, error);
  if (!error) fs::current_path(folder, error);
  if (error) throw Failure(folder + ": " + error.message());
}

static Findings dump(const ModuleLibrary& module, const Arguments& arguments) {
  if (auto problem = device_problem(mapped_device())) throw Failure(*problem);
  enter_folder(arguments);
  Dump(module, arguments.json).run();
  return {};
}

const Verb DUMP = {
    .name = "dump",
    .help = "save the memory of a modem that has crashed",
    .need = Session::LIBRARY,
    .arguments = {{.name = "--output",
                   .help = "where to make the dump's folder; default the current folder",
                   .short_name = "-o"}},
    .run = dump};

}  // namespace zopctl
