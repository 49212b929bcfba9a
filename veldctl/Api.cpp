#include "veldctl/Api.h"

#include <curl/curl.h>

#include <cstring>
#include <memory>

#include "daemon/LocalApi.h"
#include "daemon/StartUp.h"

namespace {
constexpr long timeout = 3;  // seconds
constexpr unsigned success = 200;

std::string faultOf(CURL* curl, CURLcode code) {
  long number = 0;
  curl_easy_getinfo(curl, CURLINFO_OS_ERRNO, &number);
  if (code == CURLE_OPERATION_TIMEDOUT) return "timeout after " + std::to_string(timeout) + " s";
  if (code == CURLE_COULDNT_CONNECT && number != 0)
    return std::string(localApiSocket) + ": " + std::strerror(static_cast<int>(number));
  return curl_easy_strerror(code);
}

// Writes the body to `answer`. Returns an error text, empty on success.
std::string fetch(std::string& answer) {
  const std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> curl(curl_easy_init(), curl_easy_cleanup);
  if (curl == nullptr) return "out of memory";
  const std::string url = std::string(localApiHost) + settingsPath;
  curl_easy_setopt(curl.get(), CURLOPT_TIMEOUT, timeout);
  curl_easy_setopt(curl.get(), CURLOPT_UNIX_SOCKET_PATH, localApiSocket);
  curl_easy_setopt(curl.get(), CURLOPT_URL, url.c_str());
  curl_easy_setopt(curl.get(), CURLOPT_WRITEFUNCTION, appendAnswer);
  curl_easy_setopt(curl.get(), CURLOPT_WRITEDATA, &answer);
  const CURLcode code = curl_easy_perform(curl.get());
  return code == CURLE_OK ? "" : faultOf(curl.get(), code);
}
}  // namespace

ApiAnswer askForSettings() {
  std::string body;
  const std::string error = fetch(body);
  if (!error.empty()) return {Json::nullValue, "the local API does not answer: " + error};
  Json::Value answer;
  if (!parseJson(body, &answer) || !answer.isObject() || !answer["code"].isUInt())
    return {Json::nullValue, "the answer of the local API is not a JSON object with a \"code\""};
  if (answer["code"].asUInt() != success)
    return {Json::nullValue, "the local API answers with code " + answer["code"].asString()};
  if (!answer["result"].isObject())
    return {Json::nullValue, "the answer of the local API has no object in \"result\""};
  return {answer["result"], ""};
}
