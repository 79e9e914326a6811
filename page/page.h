// The page that zopctl html makes: one file without scripts, which fetches nothing.
#pragma once

#include <string>
#include <vector>

#include "page/html_writer.h"
#include "page/statistics.h"
#include "records/recording.h"

namespace page {

using namespace records;  // whose recordings are shown

std::string page_of(const std::vector<Recording>& recordings);

// The beginning of any page, up to its body.
void write_head(HtmlWriter& html, const std::string& title);

// ---- parts of it, for one recording ----

// The last state as tiles, and a list of what stands out over time.
void write_summary(HtmlWriter& html, const Recording& recording, const Statistics& statistics);

// The cells of the last moment that has any.
void write_cells(HtmlWriter& html, const Recording& recording);

void write_events(HtmlWriter& html, const Recording& recording);

// The latest report, a table for each section.
void write_report(HtmlWriter& html, const Recording& recording);

}  // namespace page
