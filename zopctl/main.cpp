// zopctl: a host for the modem's module, on the command line.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <span>
#include <system_error>

#include "zopctl/host/consent.h"
#include "zopctl/host/session.h"
#include "zopctl/host/signals.h"
#include "zopctl/options.h"
#include "zopctl/text/failure.h"
#include "zopctl/text/output.h"
#include "zopctl/text/printable.h"

using namespace zopctl;

constexpr char UNWRITTEN[] = "the output could not be written; is the disk full?";

static int show(const Options& options, const Findings& findings) {
  if (findings.empty()) {
    // the verb has printed its own output
  } else if (options.json) {
    print_json(findings);
  } else {
    print_table(findings);
  }
  if (fflush(stdout) != 0) throw Failure(UNWRITTEN);
  return any_failed(findings) ? 1 : 0;
}

static void require_consent(const Verb& verb, const Arguments& arguments) {
  if (verb.danger == nullptr || arguments.yes || arguments.has("--dry-run")) return;
  if (!is_person_there()) throw UsageError(std::string(verb.danger) + "; confirm with --yes");
  ask_consent(verb.danger);
}

static int run(Options& options) {
  const Verb& verb = *options.verb;
  check_arguments(verb, options.arguments);
  require_consent(verb, options.arguments);
  if (verb.run_alone != nullptr) return show(options, verb.run_alone(options.arguments));
  if (verb.ask != nullptr) verb.ask(options.arguments);
  Session session(options, verb.need);
  check_signals();
  return show(options, verb.run(session.module(), options.arguments));
}

// Programs get one object; of a verb that prints events it is the last of them.
static void print_error(const Verb* verb, const Failure& failure) {
  using Json = nlohmann::ordered_json;
  Json object;
  if (verb != nullptr && verb->events) object = {{"event", "end"}, {"result", failure.result}};
  object["error"] = error_object(failure.exit_code, failure.what(), failure.advice);
  if (failure.details.is_object()) object.update(failure.details);
  printf("%s\n", printable_json(object).c_str());
  fflush(stdout);
}

// "what happened; what to do next"
static Failure with_advice(const Failure& failure) {
  std::string text = failure.what();
  size_t end = text.find("; ");
  if (!failure.advice.empty() || end == std::string::npos) return failure;
  Failure split(text.substr(0, end), failure.exit_code, text.substr(end + 2));
  split.result = failure.result;
  split.details = failure.details;
  return split;
}

static int end_with(bool json, const Verb* verb, Failure failure) {
  failure = with_advice(failure);
  if (json) print_error(verb, failure);
  const char* link = failure.advice.empty() ? "" : "; ";
  std::string text = failure.what() + std::string(link) + failure.advice;
  fprintf(stderr, "zopctl: %s\n", printable(text, "\n").c_str());
  return failure.exit_code;
}

// The end of samples that go on until then is no failure.
static int end_interrupted(const Options& options, int exit_code) {
  Failure failure("stopped", exit_code);
  failure.result = "interrupted";
  bool samples = options.verb->samples || options.arguments.has("--watch");
  if (options.json && !samples) print_error(options.verb, failure);
  return exit_code;
}

// Otherwise the modem's device could get the descriptor of a closed stream, and our output.
static void fill_standard_streams() {
  int fd;
  do fd = open("/dev/null", O_RDWR);
  while (fd >= 0 && fd <= STDERR_FILENO);
  close(fd);
}

static int run_verb(Options& options) {
  auto end = [&](const Failure& failure) { return end_with(options.json, options.verb, failure); };
  try {
    return run(options);
  } catch (const Interrupted& interrupted) {
    return end_interrupted(options, 128 + interrupted.signal);
  } catch (const UsageError& error) {
    return end(Failure(error.what(), 2));
  } catch (const Failure& error) {
    return end(error);
  } catch (const records::Failure& error) {
    return end(Failure(error));
  } catch (const std::filesystem::filesystem_error& error) {
    return end(file_failure(error.path1().string(), error.code().value()));
  } catch (const std::exception& error) {
    return end(Failure(error.what()));
  }
}

// Help and documents are printed while the options are read.
static std::optional<Options> options_of(int argc, char** argv) {
  try {
    std::optional<Options> options = read_options(argc, argv);
    if (options || (std::cout.flush().good() && fflush(stdout) == 0)) return options;
  } catch (const std::system_error&) {  // of a print
  }
  throw Failure(UNWRITTEN);
}

int main(int argc, char** argv) {
  fill_standard_streams();
  std::span words(argv, static_cast<size_t>(argc));
  bool json = std::ranges::find(words, std::string_view("--json")) != words.end();
  try {
    std::optional<Options> options = options_of(argc, argv);
    if (!options) return 0;
    watch_signals();
    return run_verb(*options);
  } catch (const UsageError& error) {
    return end_with(json, nullptr, Failure(error.what(), 2));
  } catch (const Failure& error) {
    return end_with(false, nullptr, error);
  }
}
