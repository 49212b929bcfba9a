#include "daemon/LocalApi.h"

#include <curl/curl.h>

#include <memory>
#include <sstream>

#include "support/Logger.h"

namespace {
bool fetch(const std::string& url, std::string& answer, long timeout) {
  const std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> curl(curl_easy_init(), curl_easy_cleanup);
  if (curl == nullptr) return false;
  if (timeout > 0 && curl_easy_setopt(curl.get(), CURLOPT_TIMEOUT, timeout) != CURLE_OK) return false;
  return curl_easy_setopt(curl.get(), CURLOPT_UNIX_SOCKET_PATH, localApiSocket) == CURLE_OK &&
         curl_easy_setopt(curl.get(), CURLOPT_URL, url.c_str()) == CURLE_OK &&
         curl_easy_setopt(curl.get(), CURLOPT_HEADER, 0L) == CURLE_OK &&
         curl_easy_setopt(curl.get(), CURLOPT_FOLLOWLOCATION, 0L) == CURLE_OK &&
         curl_easy_setopt(curl.get(), CURLOPT_WRITEFUNCTION, curlWriter) == CURLE_OK &&
         curl_easy_setopt(curl.get(), CURLOPT_WRITEDATA, &answer) == CURLE_OK &&
         curl_easy_perform(curl.get()) == CURLE_OK;
}
}  // namespace

bool loadFromApi(const std::string& url, Json::Value& result) { return loadFromApi(url, result, 0); }

bool loadFromApi(const std::string& url, Json::Value& result, long timeout) {
  ORVEL_LOG(TRACE, "loadFromApi");
  std::string answer;
  if (!fetch(url, answer, timeout)) return false;
  Json::Value envelope;
  if (!parseJson(answer, &envelope)) return false;
  if (envelope["code"].asUInt() != 200) return false;
  result = envelope["result"];
  return true;
}

std::size_t appendAnswer(char* data, std::size_t size, std::size_t count, void* answer) {
  if (answer == nullptr) return 0;
  static_cast<std::string*>(answer)->append(data, size * count);
  return size * count;
}

std::size_t curlWriter(char* data, std::size_t size, std::size_t count, void* answer) {
  ORVEL_LOG(TRACE, "curlWriter");
  return appendAnswer(data, size, count, answer);
}

bool parseJson(std::string text, Json::Value* value) {
  Json::CharReaderBuilder builder;
  Json::CharReaderBuilder::strictMode(&builder.settings_);
  std::istringstream stream(text);
  try {
    return Json::parseFromStream(builder, stream, value, nullptr);
  } catch (const Json::Exception&) {
    return false;  // the parser throws only if the nesting is too deep
  }
}
