// zopctl: a host for the modem's module, on the command line.
#include <cstdio>

#include "zopctl/options.h"
#include "zopctl/output.h"
#include "zopctl/session.h"
#include "zopctl/status.h"

using namespace zopctl;

static int show(const Options& options, const Findings& findings) {
  if (options.json) {
    print_json(findings);
  } else {
    print_table(findings);
  }
  return any_failed(findings) ? 1 : 0;
}

static int run(const Options& options) {
  Session session(options);
  return show(options, read_status(session.module()));
}

int main(int argc, char** argv) {
  int exit_code = 0;
  std::optional<Options> options = read_options(argc, argv, exit_code);
  if (!options) return exit_code;
  watch_signals();
  try {
    return run(*options);
  } catch (const Interrupted& interrupted) {
    return 128 + interrupted.signal;
  } catch (const std::exception& error) {
    fprintf(stderr, "zopctl: %s\n", error.what());
    return 1;
  }
}
