// The page that zopctl html makes: one file without scripts, which fetches nothing.
#pragma once

#include <string>
#include <vector>

#include "zopctl/html_writer.h"
#include "zopctl/recording.h"

namespace zopctl::page {

std::string page_of(const std::vector<Recording>& recordings);

// ---- parts of it, for one recording ----

// How things stood last, as tiles, and over time what stands out, as a list.
void write_summary(HtmlWriter& html, const Recording& recording);

// The cells of the last sample that had any.
void write_cells(HtmlWriter& html, const Recording& recording);

void write_events(HtmlWriter& html, const Recording& recording);

// The latest report, a table a section.
void write_report(HtmlWriter& html, const Recording& recording);

// The page's style sheet.
extern const char PAGE_STYLE[];

}  // namespace zopctl::page
