// The page of a recording in a browser. Its content is in tests/transcripts/zopctl/html.txt.
#include "tests/support/program.h"
#include "tests/support/temporary_folder.h"

TEST(ZopctlHtml, is_drawn_by_a_browser) {
  TemporaryFolder folder;
  std::string recording = folder.write(
      "drive.jsonl",
      R"({"time":"2026-11-21T00:00:00Z","link":"open","bars":3,"report":{"state":{"RSSI":-75}}})");
  std::string page = folder / "page.html", picture = folder / "page.png";
  EXPECT_EQ(shell(ZOPCTL " html " + recording + " -o " + page).exit_code, 0);
  Outcome browser = shell(
      "timeout 40 chromium --headless --no-sandbox --disable-gpu --no-first-run --user-data-dir=" +
      folder / "profile" + " --screenshot=" + picture + " --window-size=800,1600 file://" + page);
  std::string png = folder.read("page.png");
  ASSERT_GT(png.size(), 24u) << "no picture; does chromium run here?\n" << browser.output;
  EXPECT_EQ(png.substr(16, 8), std::string("\0\0\x03\x20\0\0\x06\x40", 8)) << "another size";
  EXPECT_GT(png.size(), 20'000u) << "a blank page has 7,000";
}
