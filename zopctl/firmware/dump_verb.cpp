// zopctl dump.
#include "zopctl/firmware/dump.h"

#include <algorithm>
#include <charconv>

#include "zopctl/firmware/firmware.h"
#include "zopctl/text/failure.h"

namespace zopctl {

static mode_t mode_of(const std::string& text) {
  unsigned mode = 0;
  auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), mode, 8);
  bool good = error == std::errc{} && end == text.data() + text.size() && (mode & ~0666u) == 0 &&
              (mode & 0600) == 0600;
  if (!good) throw UsageError("--mode takes the files' mode in octal, like 0600 or 0644");
  return mode;
}

static DumpOptions options_of(const Arguments& arguments) {
  DumpOptions options;
  options.json = arguments.json;
  options.wait = arguments.has("--wait");
  if (arguments.has("--output")) options.dir = arguments.text("--output");
  if (arguments.has("--resume")) options.resume = arguments.text("--resume");
  if (arguments.has("--output") && arguments.has("--resume"))
    throw UsageError("--resume goes on in its own folder; leave out --output");
  if (arguments.has("--mode")) options.mode = mode_of(arguments.text("--mode"));
  if (arguments.has("--timeout"))
    options.timeout = StallWatch::Seconds(arguments.number("--timeout"));
  std::string regions = arguments.has("--region") ? arguments.text("--region") : "";
  for (size_t start = 0; start < regions.size();) {
    size_t end = std::min(regions.find(',', start), regions.size());
    options.wanted.insert(regions.substr(start, end - start));
    start = end + 1;
  }
  return options;
}

static void check_dump(const Arguments& arguments) { options_of(arguments); }

static Findings dump(const ModuleLibrary& module, const Arguments& arguments) {
  DumpOptions options = options_of(arguments);
  Dump(module, options).run();
  return {};
}

const Verb DUMP = {
    .name = "dump",
    .help = "save the memory of a modem that has crashed",
    .need = Session::PORT,
    .events = true,
    .arguments = {{.name = "--output",
                   .help = "where to make the dump's folder; default the current folder",
                   .short_name = "-o"},
                  {.name = "--region", .help = "only these regions: names or numbers, with commas"},
                  {.name = "--resume", .help = "go on with the dump that broke off in this folder"},
                  {.name = "--timeout",
                   .help =
                       "seconds without an answer until a region is given up (default 60, 0 never)",
                   .range = Range{0, 86'400}},
                  {.name = "--mode", .help = "of the files, in octal; default 0600"},
                  {.name = "--wait",
                   .help = "wait for the device, and for the modem to crash",
                   .flag = true}},
    .check = check_dump,
    .run = dump};

}  // namespace zopctl
