// The state file: what survives a restart, and errors that name the file.
#include "simulator/model/state_file.h"

#include <gtest/gtest.h>

#include "tests/support/temporary_folder.h"

using namespace sim;

class SimulatorState : public testing::Test {
 protected:
  TemporaryFolder folder;
  std::string path = folder / "state";
};

TEST_F(SimulatorState, survives_a_restart) {
  Model before;
  before.sim.pin = "9876";
  before.sim.lock = 3;
  before.sim.retries = 2;
  before.nv[4711] = {1, 2, 3};
  before.sim.user = {{"262", "02"}};
  before.device.profiles[3] = {3, 4};
  before.device.half_written = 5;
  before.outbox = {{"1", "hello"}};
  StateFile(path).save(before);
  Model after;
  StateFile(path).load(after);
  EXPECT_EQ(after.sim.pin, "9876");
  EXPECT_EQ(after.sim.retries, 2);
  EXPECT_EQ(after.nv.at(4711), (Bytes{1, 2, 3}));
  EXPECT_EQ(after.sim.user.at(0).mnc, "02");
  EXPECT_EQ(after.device.profiles.at(3), (Bytes{3, 4}));
  EXPECT_EQ(after.device.half_written, 5);
  EXPECT_EQ(after.outbox.at(0).text, "hello");
  EXPECT_EQ(after.sim.lock, 2);  // the PIN is wanted again
  EXPECT_EQ(after.sim.status, 3);
}

// A process killed while saving leaves an incomplete new file beside the old one.
TEST_F(SimulatorState, an_interrupted_save_keeps_the_old_state) {
  Model model;
  model.sim.pin = "1111";
  StateFile(path).save(model);
  folder.write("state.new", "{\"sim\": {\"pi");
  Model after;
  StateFile(path).load(after);
  EXPECT_EQ(after.sim.pin, "1111");
  model.sim.pin = "2222";
  StateFile(path).save(model);
  StateFile(path).load(after);
  EXPECT_EQ(after.sim.pin, "2222");
  EXPECT_FALSE(std::filesystem::exists(path + ".new"));
}

TEST_F(SimulatorState, errors_name_the_file) {
  folder.write("state", "rubbish");
  Model model;
  auto message = [&](const std::string& file, auto action) -> std::string {
    try {
      (StateFile(file).*action)(model);
    } catch (const std::runtime_error& error) {
      return error.what();
    }
    return "no error";
  };
  EXPECT_TRUE(message(path, &StateFile::load).starts_with(path + " is n"));
  EXPECT_EQ(message("/nowhere/state", &StateFile::save),
            "can't save the state to /nowhere/state.new: No such file or directory; name another "
            "file");
  EXPECT_EQ(message("", &StateFile::save), "no error");
}
