// Requests over HTTP, by libcurl.
#pragma once

#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace fleet {

// No answer, or that of a server that has a fault: to ask again may help.
struct Unreachable : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// The server has understood, and refuses.
struct Refused : std::runtime_error {
  using std::runtime_error::runtime_error;
};

using Fields = std::vector<std::pair<std::string, std::string>>;

class Http {
 public:
  // Of "http://host:port/". check is called now and then, and ends a request by an exception; after
  // answer_s seconds a request without an answer ends too.
  Http(std::string address, long answer_s, void (*check)());
  ~Http();
  Http(const Http&) = delete;
  Http& operator=(const Http&) = delete;

  // The answer to a body, or to a form with a file. Throws one of the above.
  std::string post(const Fields& parameters, std::string_view body);
  std::string post_form(const Fields& parameters, const std::string& file, std::string_view data);

 private:
  struct Handle;
  std::string perform();
  std::string url_of(const Fields& parameters);

  std::string address_;
  std::unique_ptr<Handle> handle_;
};

}  // namespace fleet
