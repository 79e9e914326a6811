// zopctl html: reports, recordings and reports of logs as a page to read.
#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <filesystem>

#include "zopctl/page.h"
#include "zopctl/recording_reader.h"
#include "zopctl/session.h"
#include "zopctl/verbs.h"

namespace zopctl {

namespace fs = std::filesystem;

// ---- output ----

[[noreturn]] static void fail(const std::string& path) {
  throw Failure(path + " could not be written: " + strerror(errno));
}

static void write_all(int fd, std::string_view text, const std::string& path) {
  while (!text.empty()) {
    ssize_t size = write(fd, text.data(), text.size());
    check_signals();
    if (size < 0 && errno == EINTR) continue;
    if (size < 0) fail(path);
    text.remove_prefix(static_cast<size_t>(size));
  }
}

// A new file beside the one that it is to replace; without keep() it goes away.
class NewFile {
 public:
  explicit NewFile(const std::string& path)
      : path_(path), name_(path + ".XXXXXX"), fd_(mkostemp(name_.data(), O_CLOEXEC)) {
    if (fd_ < 0) fail(path);
  }
  ~NewFile() {
    close(fd_);
    if (!kept_) unlink(name_.c_str());
  }
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;

  int fd() const { return fd_; }

  void keep() {
    struct stat old = {};
    mode_t mask = umask(0);
    umask(mask);
    mode_t mode = stat(path_.c_str(), &old) == 0 ? old.st_mode & 07777 : 0666 & ~mask;
    if (fchmod(fd_, mode) != 0 || fsync(fd_) != 0) fail(path_);
    if (rename(name_.c_str(), path_.c_str()) != 0) fail(path_);
    kept_ = true;
  }

 private:
  std::string path_, name_;
  int fd_;
  bool kept_ = false;
};

// A device or a pipe can't be replaced: it gets the page itself, as a link's target does.
static void write_page(const std::string& name, const std::string& text) {
  if (name == "-") return write_all(STDOUT_FILENO, text, "standard output");
  std::error_code error;
  bool exists = fs::exists(name, error);
  if (exists && !fs::is_regular_file(name, error)) {
    int fd = open(name.c_str(), O_WRONLY | O_CLOEXEC);
    if (fd < 0) fail(name);
    write_all(fd, text, name);
    if (close(fd) != 0) fail(name);
    return;
  }
  NewFile file(exists ? fs::canonical(name).string() : name);
  write_all(file.fd(), text, name);
  file.keep();
}

// ---- the verb ----

static std::string output_of(const Arguments& arguments, const std::vector<std::string>& inputs) {
  if (!arguments.has("--output")) {
    if (isatty(STDOUT_FILENO) != 0) throw UsageError("where to? Give -o page.html");
    return "-";
  }
  const std::string& output = arguments.text("--output");
  for (const std::string& input : inputs) {
    std::error_code error;
    if (fs::is_regular_file(input, error) && fs::equivalent(input, output, error)) {
      throw UsageError(output + " is read from; write the page to another file");
    }
  }
  return output;
}

static std::vector<page::Recording> read_input(const std::string& input,
                                               const zop_log_item* items) {
  bool is_standard = input == "-";
  std::string name = is_standard ? "standard input" : input;
  FILE* file = is_standard ? fdopen(dup(STDIN_FILENO), "r") : fopen(input.c_str(), "re");
  if (file == nullptr) throw Failure(name + ": " + strerror(errno));
  return page::read_recordings(file, name, items);
}

Findings html(const ModuleLibrary& module, const Arguments& arguments) {
  const std::vector<std::string>& inputs = arguments.lists.at("INPUT");
  if (std::count(inputs.begin(), inputs.end(), "-") > 1) {
    throw UsageError("standard input can be read once only");
  }
  std::string output = output_of(arguments, inputs);
  std::vector<page::Recording> recordings;
  for (const std::string& input : inputs) {
    std::vector<page::Recording> read = read_input(input, *module.gLogItems);
    std::move(read.begin(), read.end(), std::back_inserter(recordings));
  }
  write_page(output, page::page_of(recordings));
  return {};
}

}  // namespace zopctl
