// zopctl parse-log and html: read device logs, reports and recordings. No modem is needed.
#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <thread>

#include "page/page.h"
#include "page/page_file.h"
#include "records/log_parser.h"
#include "records/recording_reader.h"
#include "zopctl/host/signals.h"
#include "zopctl/text/failure.h"
#include "zopctl/text/printable.h"
#include "zopctl/verbs/verbs.h"

namespace zopctl {

namespace fs = std::filesystem;

static void warn(const std::string& text) { fmt::print(stderr, "zopctl: {}\n", printable(text)); }

static const records::Callbacks CALLBACKS = {check_signals, warn};

constexpr unsigned MAX_JOBS = 64;

static Findings parse_log(const Arguments& arguments) {
  auto files = arguments.lists.find("FILE");
  bool has_files = files != arguments.lists.end();
  unsigned processors = std::clamp(std::thread::hardware_concurrency(), 1U, MAX_JOBS);
  records::LogParser parser(stdout, CALLBACKS);
  parser.read(has_files ? files->second : std::vector<std::string>{"-"},
              arguments.has("--jobs") ? arguments.number("--jobs") : processors);
  parser.end();
  return {};
}

static std::string output_of(const Arguments& arguments, const std::vector<std::string>& inputs) {
  if (!arguments.has("--output")) {
    if (isatty(STDOUT_FILENO) != 0) throw UsageError("no output file; use -o page.html");
    return "-";
  }
  const std::string& output = arguments.text("--output");
  for (const std::string& input : inputs) {
    std::error_code error;
    if (fs::is_regular_file(input, error) && fs::equivalent(input, output, error)) {
      throw UsageError(output + " is an input; write the page to another file");
    }
  }
  return output;
}

static Findings html(const Arguments& arguments) {
  const std::vector<std::string>& inputs = arguments.lists.at("INPUT");
  if (std::count(inputs.begin(), inputs.end(), "-") > 1) {
    throw UsageError("standard input can be read only once");
  }
  std::string output = output_of(arguments, inputs);
  if (arguments.json && output == "-") {
    throw UsageError("standard output is for the JSON; use -o page.html");
  }
  std::vector<records::Recording> recordings;
  for (const std::string& input : inputs) {
    auto read = records::read_recordings(input, CALLBACKS);
    std::move(read.begin(), read.end(), std::back_inserter(recordings));
  }
  page::write_page(output, page::page_of(recordings), check_signals);
  if (!arguments.json) return {};
  return one_section(
      "page", "Page",
      {shown("file", "File", output, output), shown("parts", "Parts", recordings.size(), "")});
}

const Verb PARSE_LOG = {.name = "parse-log",
                        .help = "extract the reports from device logs, one JSON object each",
                        .arguments = {{.name = "FILE",
                                       .help = "logs, oldest first; default standard input",
                                       .optional = true,
                                       .list = true},
                                      {.name = "--jobs",
                                       .help = "threads that read; default one for each processor",
                                       .range = Range{1, MAX_JOBS}}},
                        .run_alone = parse_log};
const Verb HTML = {.name = "html",
                   .help = "make an HTML page of reports (--json), recordings and parsed logs",
                   .arguments = {{.name = "INPUT",
                                  .help = "files, each a section of the page; - is standard input",
                                  .list = true},
                                 {.name = "--output",
                                  .help = "the page; default standard output",
                                  .short_name = "-o"}},
                   .run_alone = html};

}  // namespace zopctl
