#include "fuzz/shared/FakeCurl.h"

#include <curl/curl.h>

#include <algorithm>
#include <cstdarg>

#undef curl_easy_setopt

namespace FakeCurl {
std::vector<Request> requests;
std::string answer;
std::size_t pieceSize = 1;
}  // namespace FakeCurl

namespace {
struct Transfer {
  FakeCurl::Request request;
  curl_write_callback write = nullptr;
  void* writeData = nullptr;
};
}  // namespace

extern "C" {

CURL* curl_easy_init() { return new Transfer; }

void curl_easy_cleanup(CURL* handle) { delete static_cast<Transfer*>(handle); }

CURLcode curl_easy_setopt(CURL* handle, CURLoption option, ...) {
  auto* const transfer = static_cast<Transfer*>(handle);
  va_list values;
  va_start(values, option);
  switch (option) {
    case CURLOPT_URL:
      transfer->request.url = va_arg(values, const char*);
      break;
    case CURLOPT_POSTFIELDS:
      transfer->request.body = va_arg(values, const char*);
      break;
    case CURLOPT_WRITEFUNCTION:
      transfer->write = va_arg(values, curl_write_callback);
      break;
    case CURLOPT_WRITEDATA:
      transfer->writeData = va_arg(values, void*);
      break;
    default:
      break;
  }
  va_end(values);
  return CURLE_OK;
}

CURLcode curl_easy_perform(CURL* handle) {
  const auto* const transfer = static_cast<Transfer*>(handle);
  FakeCurl::requests.push_back(transfer->request);
  std::string rest = FakeCurl::answer;
  while (!rest.empty()) {
    const std::size_t length = std::min(rest.size(), FakeCurl::pieceSize);
    if (transfer->write(rest.data(), 1, length, transfer->writeData) != length) return CURLE_WRITE_ERROR;
    rest.erase(0, length);
  }
  return CURLE_OK;
}

}  // extern "C"
