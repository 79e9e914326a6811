// Drawings of a recording over time, as inline SVG. All have the width of the page and one time
// axis, so that things above each other happened at the same time.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "page/html_writer.h"
#include "page/statistics.h"
#include "page/time_axis.h"

namespace page {

class TimeLine {
 public:
  TimeLine(HtmlWriter& html, const Recording& recording, const Statistics& statistics);

  // Every drawing that has something to show.
  void draw();

 private:
  void graph(const char* title, const std::vector<SeriesId>& series, int step);
  void bars();
  void track(TrackId track);
  void cell(uint32_t cell);
  void cells();
  void events();
  void clock();

  void open_row(const char* title, const char* unit, const std::vector<SeriesId>& series = {});
  void open_drawing(const char* style, const std::string& title, const std::string& description);
  void close_row();
  void lines_of_time();
  void lines_of_values(double least, double most, int step);
  void line(SeriesId series, double least, double most);
  void probes();
  void lost();
  using TextOf = std::function<std::string(uint32_t state)>;
  void marks(const Strip& strip, const TextOf& style, const TextOf& title);
  void mark(const Span& span, const std::string& style, const std::string& title);
  void label(const Span& span, const std::string& text);
  void shares(TrackId track);
  std::string when(const Span& span) const;

  HtmlWriter& html_;
  const Recording& recording_;
  const Statistics& statistics_;
  TimeAxis axis_;
  Strip lost_;
};

// Class of a state's colour: good, warn, bad, none, or one of the plain ones.
std::string state_style(TrackId track, const Words& words, uint32_t state);

// Class of a cell's level, q0 (weakest) to q5.
std::string level_style(const CellId& cell, float level);

std::string cell_name(const CellId& cell);

// "-75 dBm"; a dash when it is missing.
std::string value_text(SeriesId series, float value);

}  // namespace page
