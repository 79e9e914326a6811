// zop-fleet-sim: prints the log of a simulated fleet.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <fstream>

#include "fleet/simulated_fleet.h"

static int run(const fleet::FleetPlan& plan, const std::string& truth) {
  fleet::SimulatedFleet simulated(plan);
  simulated.log([](std::string_view line) {
    fwrite(line.data(), 1, line.size(), stdout);
    putchar('\n');
  });
  if (!truth.empty()) std::ofstream(truth) << simulated.truth().dump(2) << "\n";
  return fflush(stdout) == 0 ? 0 : 1;
}

int main(int argc, char** argv) {
  fleet::FleetPlan plan;
  std::string truth;
  CLI::App app("prints the log of a simulated fleet with known troubles");
  app.add_option("--devices", plan.devices, "how many")->check(CLI::Range(1, 10'000'000));
  app.add_option("--days", plan.days, "how long")->check(CLI::Range(1, 3650));
  app.add_option("--every", plan.every_s, "seconds between two reports of a device")
      ->check(CLI::Range(1, 86'400));
  app.add_option("--until", plan.until, "when the log ends, seconds since 1970")->required();
  app.add_option("--seed", plan.seed, "for another fleet of the same size");
  app.add_option("--troubled", plan.troubled, "devices for each trouble")
      ->check(CLI::Range(0, 100'000));
  app.add_option("--truth", truth, "file for what the log holds, JSON");
  CLI11_PARSE(app, argc, argv);
  if (plan.devices < 8 * plan.troubled) {
    fprintf(stderr, "zop-fleet-sim: too few devices for their troubles\n");
    return 2;
  }
  return run(plan, truth);
}
