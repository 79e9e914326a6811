// zopctl: a host for the modem's module, on the command line.
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>

#include "zopctl/host/session.h"
#include "zopctl/host/signals.h"
#include "zopctl/options.h"
#include "zopctl/text/failure.h"
#include "zopctl/text/output.h"

using namespace zopctl;

static int show(const Options& options, const Findings& findings) {
  if (findings.empty()) {
    // the verb has printed its own output
  } else if (options.json) {
    print_json(findings);
  } else {
    print_table(findings);
  }
  if (fflush(stdout) != 0) throw Failure("the output could not be written; is the disk full?");
  return any_failed(findings) ? 1 : 0;
}

// A typing mistake must not break a device: a person is asked, a script says --yes.
static void require_consent(const Verb& verb, const Arguments& arguments) {
  if (verb.danger == nullptr || arguments.yes || arguments.has("--dry-run")) return;
  bool person = isatty(STDIN_FILENO) != 0 && isatty(STDERR_FILENO) != 0;
  if (!person) throw UsageError(std::string(verb.danger) + "; confirm with --yes");
  fprintf(stderr, "Caution: %s.\nType yes to go on: ", verb.danger);
  char answer[16] = "";
  if (fgets(answer, sizeof answer, stdin) == nullptr) fputs("\n", stderr);
  if (strcmp(answer, "yes\n") != 0) throw Failure("not confirmed, nothing was changed");
}

static int run(const Options& options) {
  require_consent(*options.verb, options.arguments);
  Session session(options, options.verb->need);
  check_signals();
  return show(options, options.verb->run(session.module(), options.arguments));
}

// Programs that read events get the end as the last of them.
static void print_end(const Options& options, const Failure& failure) {
  if (!options.json || !options.verb->events) return;
  using Json = nlohmann::ordered_json;
  Json event = {{"event", "end"},
                {"result", failure.result},
                {"exit_code", failure.exit_code},
                {"text", failure.what()},
                {"advice", failure.advice}};
  if (failure.details.is_object()) event.update(failure.details);
  printf("%s\n", event.dump(-1, ' ', false, Json::error_handler_t::replace).c_str());
  fflush(stdout);
}

static int end_with(const Options& options, const Failure& failure) {
  print_end(options, failure);
  const char* link = failure.advice.empty() ? "" : "; ";
  fprintf(stderr, "zopctl: %s%s%s\n", failure.what(), link, failure.advice.c_str());
  return failure.exit_code;
}

static int end_interrupted(const Options& options, int exit_code) {
  Failure failure("stopped", exit_code);
  failure.result = "interrupted";
  print_end(options, failure);
  return exit_code;
}

// Otherwise the modem's device could get the descriptor of a closed stream, and our output.
static void fill_standard_streams() {
  int fd;
  do fd = open("/dev/null", O_RDWR);
  while (fd >= 0 && fd <= STDERR_FILENO);
  close(fd);
}

int main(int argc, char** argv) {
  int exit_code = 0;
  fill_standard_streams();
  std::optional<Options> options = read_options(argc, argv, exit_code);
  if (!options) return exit_code;
  watch_signals();
  try {
    return run(*options);
  } catch (const Interrupted& interrupted) {
    return end_interrupted(*options, 128 + interrupted.signal);
  } catch (const UsageError& error) {
    return end_with(*options, Failure(error.what(), 2));
  } catch (const Failure& error) {
    return end_with(*options, error);
  } catch (const std::exception& error) {
    return end_with(*options, Failure(error.what()));
  }
}
