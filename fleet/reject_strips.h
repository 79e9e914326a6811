// Reject causes over time, for the page: a strip for each cause.
#pragma once

#include "fleet/store.h"
#include "page/html_writer.h"

namespace fleet {

// Of the answer to the question "rejects".
void write_reject_strips(page::HtmlWriter& html, const Answer& rejects, const Ask& values);

}  // namespace fleet
