// The figures of a page, and the page in a browser. The rest of its content is in
// tests/transcripts/zopctl/html.txt.
#include <algorithm>
#include <ctime>

#include "page/time_axis.h"
#include "tests/support/program.h"
#include "tests/support/temporary_folder.h"

TEST(ZopctlHtml, is_drawn_by_a_browser) {
  TemporaryFolder folder;
  std::string recording = folder.write(
      "drive.jsonl",
      R"({"time":"2026-11-21T00:00:00Z","link":"open","bars":3,"report":{"state":{"rssi_dbm":-75}}})");
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

namespace {
// One of a recording, in the middle of which the samples may become rarer, and stop for a while.
struct Sample {
  int64_t time, length;  // s
  bool lost, no_bars, gsm;
  int rssi;
};
struct Drive {
  const char* name;
  int64_t length;    // s
  int every;         // samples between two losses of the link
  int64_t steps[2];  // s between two samples of the first and the second half
  int64_t gap;       // s
  const char* unknown;
};
}  // namespace

static std::vector<Sample> samples_of(const Drive& drive) {
  std::vector<Sample> samples;
  for (int64_t time = 0; time < drive.length;) {
    auto k = static_cast<int>(samples.size());
    int64_t step = drive.steps[time < drive.length / 2 ? 0 : 1];
    int phase = k % drive.every;
    samples.push_back({time, step, phase == 4, phase == 1 || phase == 2, phase < 2, -60 - k % 47});
    bool middle = time < drive.length / 3 && time + step >= drive.length / 3;
    time += step + (middle ? drive.gap : 0);
  }
  return samples;
}

static std::string text_of(const Sample& sample) {
  time_t time = 1'800'000'000 + sample.time;
  char text[400], clock[40];
  strftime(clock, sizeof clock, "%Y-%m-%dT%H:%M:%SZ", gmtime(&time));
  if (sample.lost) {
    snprintf(text, sizeof text, R"({"time":"%s","link":"lost","bars":null,"report":null})", clock);
  } else {
    snprintf(text, sizeof text,
             R"({"time":"%s","link":"open","bars":%s,"reason":%s,)"
             R"("report":{"state":{"rssi_dbm":%d,"system_mode":{"code":%d,"text":"%s"}}}})",
             clock, sample.no_bars ? "null" : "3", sample.no_bars ? "\"searching\"" : "null",
             sample.rssi, sample.gsm ? 3 : 5, sample.gsm ? "GSM" : "WCDMA");
  }
  return std::string(text) + "\n";
}

// How the page says what part of the time it was so.
static std::string share_of(const std::vector<Sample>& samples, bool Sample::*state) {
  int64_t part = 0, whole = 0;
  for (const Sample& sample : samples) {
    part += sample.*state ? sample.length : 0;
    whole += sample.length;
  }
  char text[40];
  double share = static_cast<double>(part) / static_cast<double>(whole);
  snprintf(text, sizeof text, "%.1f\u00A0%%", 100 * share);
  return text;
}

static std::string times_of(const std::vector<Sample>& samples, bool Sample::*state) {
  int64_t times = 0, length = 0, longest = 0;
  for (size_t i = 0; i < samples.size(); ++i) {
    bool goes_on = i > 0 && samples[i - 1].*state &&
                   samples[i - 1].time + samples[i - 1].length == samples[i].time;
    times += samples[i].*state && !goes_on ? 1 : 0;
    if (samples[i].*state) length = (goes_on ? length : 0) + samples[i].length;
    longest = std::max(longest, length);
  }
  return share_of(samples, state) + " of the time, " + std::to_string(times) + " times, at most " +
         page::duration_text(1000 * longest);
}

static std::string spread_of(const std::vector<Sample>& samples) {
  std::vector<int> seconds;
  for (const Sample& sample : samples) {
    if (!sample.lost)
      seconds.insert(seconds.end(), static_cast<size_t>(sample.length), sample.rssi);
  }
  std::sort(seconds.begin(), seconds.end());
  return std::to_string(seconds.front()) + " to " + std::to_string(seconds.back()) + ", median " +
         std::to_string(seconds[(seconds.size() - 1) / 2]);
}

// Whether a part of the page begins with the text before the star and ends with the one after it.
static bool has(const std::string& page, const std::string& figure) {
  size_t star = figure.find('*'), start = page.find(figure.substr(0, star));
  if (start == std::string::npos || star == std::string::npos) return start != std::string::npos;
  std::string part = page.substr(start, page.find('<', start) - start);
  return contains(part, figure.substr(star + 1));
}

// Recounts what the page says.
TEST(ZopctlHtml, figures_are_those_of_all_samples) {
  static const Drive DRIVES[] = {
      {"10 s", 10, 5, {1, 1}, 0, ""},
      {"8 h, slower in its second half", 28'800, 60, {1, 10}, 0, ""},
      {"a day", 86'400, 12, {5, 5}, 0, ""},
      {"a day with an hour unknown", 86'400, 7, {10, 5}, 3'600, "nothing is known of 1 h 00 min"}};
  for (const Drive& drive : DRIVES) {
    TemporaryFolder folder;
    std::vector<Sample> samples = samples_of(drive);
    std::string text;
    for (const Sample& sample : samples) text += text_of(sample);
    std::string page = shell(ZOPCTL " html " + folder.write("drive.jsonl", text)).output;
    for (const std::string& figure :
         {"Link lost: *, " + times_of(samples, &Sample::lost),
          "No bars: searching: *, " + times_of(samples, &Sample::no_bars),
          ">lost " + share_of(samples, &Sample::lost), ">GSM " + share_of(samples, &Sample::gsm),
          ">" + spread_of(samples) + "<", std::string(drive.unknown)}) {
      EXPECT_TRUE(has(page, figure)) << drive.name << ": " << figure;
    }
  }
}
