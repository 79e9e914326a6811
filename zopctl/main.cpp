// zopctl: a host for the modem's module, on the command line.
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>

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

// A typing mistake must not break a device: a person confirms with --yes.
static void require_yes(const Verb& verb, const Arguments& arguments) {
  if (verb.danger == nullptr || arguments.yes || isatty(STDIN_FILENO) == 0) return;
  throw UsageError(std::string(verb.danger) + "; confirm with --yes");
}

static int run(const Options& options) {
  require_yes(*options.verb, options.arguments);
  Session session(options, options.verb->need);
  check_signals();
  return show(options, options.verb->run(session.module(), options.arguments));
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
    return 128 + interrupted.signal;
  } catch (const UsageError& error) {
    fprintf(stderr, "zopctl: %s\n", error.what());
    return 2;
  } catch (const Failure& error) {
    fprintf(stderr, "zopctl: %s\n", error.what());
    return error.exit_code;
  } catch (const std::exception& error) {
    fprintf(stderr, "zopctl: %s\n", error.what());
    return 1;
  }
}
