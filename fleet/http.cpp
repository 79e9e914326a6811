// One connection, which libcurl keeps open between requests.
#include "fleet/http.h"

#include <curl/curl.h>

#include <array>
#include <exception>

namespace fleet {

constexpr long CONNECT_S = 5, ANSWER_S = 600;
constexpr long STATUS_OK = 200, SERVER_FAULT = 500;

struct Http::Handle {
  CURL* curl = curl_easy_init();
  void (*check)() = nullptr;
  std::string answer;
  std::array<char, CURL_ERROR_SIZE> error{};
  std::exception_ptr ended;                                     // by check
  curl_slist* headers = curl_slist_append(nullptr, "Expect:");  // a body is sent at once
  ~Handle() {
    curl_easy_cleanup(curl);
    curl_slist_free_all(headers);
  }
};

// An exception must not pass through the C library.
template <typename HANDLE>
static int progress(void* pointer, curl_off_t, curl_off_t, curl_off_t, curl_off_t) {
  auto handle = static_cast<HANDLE*>(pointer);
  try {
    handle->check();
    return 0;
  } catch (...) {
    handle->ended = std::current_exception();
    return 1;
  }
}

static size_t take_answer(char* data, size_t, size_t size, void* answer) {
  static_cast<std::string*>(answer)->append(data, size);
  return size;
}

Http::Http(std::string address, void (*check)())
    : address_(std::move(address)), handle_(std::make_unique<Handle>()) {
  handle_->check = check;
  CURL* curl = handle_->curl;
  if (curl == nullptr) throw Unreachable("no memory for a connection");
  curl_easy_setopt(curl, CURLOPT_PROTOCOLS_STR, "http,https");
  curl_easy_setopt(curl, CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(curl, CURLOPT_HTTPHEADER, handle_->headers);
  curl_easy_setopt(curl, CURLOPT_CONNECTTIMEOUT, CONNECT_S);
  curl_easy_setopt(curl, CURLOPT_TIMEOUT, ANSWER_S);
  curl_easy_setopt(curl, CURLOPT_ERRORBUFFER, handle_->error.data());
  curl_easy_setopt(curl, CURLOPT_WRITEFUNCTION, take_answer);
  curl_easy_setopt(curl, CURLOPT_WRITEDATA, &handle_->answer);
  curl_easy_setopt(curl, CURLOPT_NOPROGRESS, 0L);
  curl_easy_setopt(curl, CURLOPT_XFERINFOFUNCTION, progress<Handle>);
  curl_easy_setopt(curl, CURLOPT_XFERINFODATA, handle_.get());
}

Http::~Http() = default;

std::string Http::url_of(const Fields& parameters) {
  std::string url = address_;
  for (const auto& [name, value] : parameters) {
    char* text = curl_easy_escape(handle_->curl, value.c_str(), static_cast<int>(value.size()));
    url.append(url.size() == address_.size() ? "?" : "&").append(name).append("=").append(text);
    curl_free(text);
  }
  return url;
}

std::string Http::perform() {
  handle_->answer.clear();
  CURLcode code = curl_easy_perform(handle_->curl);
  if (handle_->ended) std::rethrow_exception(std::exchange(handle_->ended, nullptr));
  if (code != CURLE_OK) {
    bool told = handle_->error[0] != '\0';
    throw Unreachable(told ? handle_->error.data() : curl_easy_strerror(code));
  }
  long status = 0;
  curl_easy_getinfo(handle_->curl, CURLINFO_RESPONSE_CODE, &status);
  if (status >= SERVER_FAULT) throw Unreachable(handle_->answer);
  if (status != STATUS_OK) throw Refused(handle_->answer);
  return handle_->answer;
}

std::string Http::post(const Fields& parameters, std::string_view body) {
  std::string url = url_of(parameters);
  curl_easy_setopt(handle_->curl, CURLOPT_URL, url.c_str());
  curl_easy_setopt(handle_->curl, CURLOPT_POST, 1L);
  curl_easy_setopt(handle_->curl, CURLOPT_POSTFIELDS, body.data());
  curl_easy_setopt(handle_->curl, CURLOPT_POSTFIELDSIZE_LARGE,
                   static_cast<curl_off_t>(body.size()));
  return perform();
}

std::string Http::post_form(const Fields& parameters, const std::string& file,
                            std::string_view data) {
  std::string url = url_of(parameters);
  using Form = std::unique_ptr<curl_mime, decltype(&curl_mime_free)>;
  Form form(curl_mime_init(handle_->curl), &curl_mime_free);
  curl_mimepart* part = curl_mime_addpart(form.get());
  curl_mime_name(part, file.c_str());
  curl_mime_filename(part, file.c_str());
  curl_mime_data(part, data.data(), data.size());
  curl_easy_setopt(handle_->curl, CURLOPT_URL, url.c_str());
  curl_easy_setopt(handle_->curl, CURLOPT_MIMEPOST, form.get());
  return perform();
}

}  // namespace fleet
