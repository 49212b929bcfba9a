#include "veldctl/Api.h"

#include <curl/curl.h>

#include <cstring>
#include <memory>

#include "daemon/LocalApi.h"
#include "daemon/StartUp.h"

namespace {

constexpr long timeout = 3;  // seconds
constexpr unsigned good = 200;

std::string faultOf(CURL* curl, CURLcode code) {
  long number = 0;
  curl_easy_getinfo(curl, CURLINFO_OS_ERRNO, &number);
  if (code == CURLE_OPERATION_TIMEDOUT) return "nothing comes within " + std::to_string(timeout) + " s";
  if (code == CURLE_COULDNT_CONNECT && number != 0)
    return std::string(localApiSocket) + ": " + std::strerror(static_cast<int>(number));
  return curl_easy_strerror(code);
}

// Returns an error text; empty on success, with the body in `answer`.
std::string fetch(std::string& answer) {
  const std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> curl(curl_easy_init(), curl_easy_cleanup);
  if (curl == nullptr) return "memory is out";
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
  const std::string silence = fetch(body);
  if (!silence.empty()) return {Json::nullValue, "the local API does not answer: " + silence};
  Json::Value answer;
  if (!parseJson(body, &answer) || !answer.isObject() || !answer["code"].isUInt())
    return {Json::nullValue, "the local API answers what is no JSON object with a \"code\""};
  if (answer["code"].asUInt() != good)
    return {Json::nullValue, "the local API answers with code " + answer["code"].asString()};
  if (!answer["result"].isObject())
    return {Json::nullValue, "the local API answers without an object in \"result\""};
  return {answer["result"], ""};
}
