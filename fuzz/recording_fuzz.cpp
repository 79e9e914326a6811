// Reads arbitrary files as recordings: their text never becomes markup of the page.
#include "fuzz/fuzz.h"
#include "page/page.h"
#include "records/recording_reader.h"

// Every element that is opened is closed, in order, and none can run anything.
static void check_markup(const std::string& page) {
  std::vector<std::string> open;
  for (size_t at = page.find('<'); at != std::string::npos; at = page.find('<', at + 1)) {
    size_t end = page.find('>', at);
    require(end != std::string::npos);
    bool closes = page[at + 1] == '/';
    size_t start = at + (closes ? 2 : 1);
    std::string name = page.substr(start, page.find_first_of(" >", start) - start);
    if (name == "!DOCTYPE" || page[end - 1] == '/') continue;
    require(name != "script" && name != "iframe" && name != "object");
    if (!closes) {
      open.push_back(name);
    } else {
      require(!open.empty() && open.back() == name);
      open.pop_back();
    }
  }
  require(open.empty());
}

static const records::ItemTable ITEMS(gLogItems);
static const records::Callbacks CALLBACKS = {[] {}, [](const std::string&) {}};

void fuzz(std::span<const uint8_t> input) {
  if (input.empty()) return;
  FILE* file = fmemopen(const_cast<uint8_t*>(input.data()), input.size(), "r");
  try {
    check_markup(page::page_of(records::read_recordings(file, "fuzz", ITEMS, CALLBACKS)));
  } catch (const records::Failure&) {
  }
}
