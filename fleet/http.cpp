// One connection, which libcurl keeps open between requests.
#include "fleet/http.h"

#include <array>
#include <exception>

#include "fleet/curl_library.h"

namespace fleet {

constexpr long CONNECT_S = 5;
constexpr long STATUS_OK = 200, SERVER_FAULT = 500;

struct Http::Handle {
  const CurlLibrary& library = CurlLibrary::loaded();
  CURL* curl = library.easy_init();
  void (*check)() = nullptr;
  std::string answer;
  std::array<char, CURL_ERROR_SIZE> error{};
  std::exception_ptr ended;                                        // by check
  curl_slist* headers = library.slist_append(nullptr, "Expect:");  // a body is sent at once
  ~Handle() {
    library.easy_cleanup(curl);
    library.slist_free_all(headers);
  }
  template <typename VALUE>
  void set(CURLoption option, VALUE value) {
    library.easy_setopt(curl, option, value);
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

Http::Http(std::string address, long answer_s, void (*check)())
    : address_(std::move(address)), handle_(std::make_unique<Handle>()) {
  handle_->check = check;
  if (handle_->curl == nullptr) throw Unreachable("no memory for a connection");
  handle_->set(CURLOPT_PROTOCOLS_STR, "http,https");
  handle_->set(CURLOPT_NOSIGNAL, 1L);
  handle_->set(CURLOPT_HTTPHEADER, handle_->headers);
  handle_->set(CURLOPT_CONNECTTIMEOUT, CONNECT_S);
  handle_->set(CURLOPT_TIMEOUT, answer_s);
  handle_->set(CURLOPT_ERRORBUFFER, handle_->error.data());
  handle_->set(CURLOPT_WRITEFUNCTION, take_answer);
  handle_->set(CURLOPT_WRITEDATA, &handle_->answer);
  handle_->set(CURLOPT_NOPROGRESS, 0L);
  handle_->set(CURLOPT_XFERINFOFUNCTION, progress<Handle>);
  handle_->set(CURLOPT_XFERINFODATA, handle_.get());
}

Http::~Http() = default;

std::string Http::url_of(const Fields& parameters) {
  std::string url = address_;
  for (const auto& [name, value] : parameters) {
    char* text =
        handle_->library.easy_escape(handle_->curl, value.c_str(), static_cast<int>(value.size()));
    url.append(url.size() == address_.size() ? "?" : "&").append(name).append("=").append(text);
    handle_->library.free(text);
  }
  return url;
}

std::string Http::perform() {
  handle_->answer.clear();
  CURLcode code = handle_->library.easy_perform(handle_->curl);
  if (handle_->ended) std::rethrow_exception(std::exchange(handle_->ended, nullptr));
  if (code != CURLE_OK) {
    bool told = handle_->error[0] != '\0';
    throw Unreachable(told ? handle_->error.data() : handle_->library.easy_strerror(code));
  }
  long status = 0;
  handle_->library.easy_getinfo(handle_->curl, CURLINFO_RESPONSE_CODE, &status);
  if (status >= SERVER_FAULT) throw Unreachable(handle_->answer);
  if (status != STATUS_OK) throw Refused(handle_->answer);
  return handle_->answer;
}

std::string Http::post(const Fields& parameters, std::string_view body) {
  std::string url = url_of(parameters);
  handle_->set(CURLOPT_URL, url.c_str());
  handle_->set(CURLOPT_POST, 1L);
  handle_->set(CURLOPT_POSTFIELDS, body.data());
  handle_->set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body.size()));
  return perform();
}

std::string Http::post_form(const Fields& parameters, const std::string& file,
                            std::string_view data) {
  std::string url = url_of(parameters);
  const CurlLibrary& curl = handle_->library;
  std::unique_ptr<curl_mime, decltype(curl.mime_free)> form(curl.mime_init(handle_->curl),
                                                            curl.mime_free);
  curl_mimepart* part = curl.mime_addpart(form.get());
  curl.mime_name(part, file.c_str());
  curl.mime_filename(part, file.c_str());
  curl.mime_data(part, data.data(), data.size());
  handle_->set(CURLOPT_URL, url.c_str());
  handle_->set(CURLOPT_MIMEPOST, form.get());
  return perform();
}

}  // namespace fleet
