// A typing mistake must not break a device: a person is asked, a script says --yes.
#pragma once

#include <string>

namespace zopctl {

// Whether there is somebody to ask.
bool is_person_there();

// Returns when it was given. Throws Failure.
void ask_consent(const std::string& danger);

}  // namespace zopctl
