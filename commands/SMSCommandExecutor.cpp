#include "commands/SMSCommandExecutor.h"

#include <curl/curl.h>

#include <iostream>
#include <memory>
#include <utility>

#include "daemon/LocalApi.h"
#include "support/Logger.h"

namespace {
std::string bodyBegin(const std::string& recipient) { return "{\"recipients\": [\"" + recipient + "\"], "; }

// Sets one option. If this fails, logs `failure` and returns false.
template <typename Value>
bool set(CURL* curl, CURLoption option, Value value, const char* failure) {
  if (curl_easy_setopt(curl, option, value) == CURLE_OK) return true;
  ORVEL_LOG(ERROR, "SMSCommandExecutor::sendCommand failed to setopt %s", failure);
  return false;
}

bool perform(CURL* curl) {
  if (curl_easy_perform(curl) == CURLE_OK) return true;
  ORVEL_LOG(ERROR, "SMSCommandExecutor::sendCommand curl_easy_perform failed");
  return false;
}

bool post(const std::string& url, const std::string& body, std::string& answer) {
  // The list is declared before the handle, because it must be released after the handle.
  std::unique_ptr<curl_slist, decltype(&curl_slist_free_all)> header(nullptr, curl_slist_free_all);
  const std::unique_ptr<CURL, decltype(&curl_easy_cleanup)> handle(curl_easy_init(), curl_easy_cleanup);
  CURL* const curl = handle.get();
  if (curl == nullptr) {
    ORVEL_LOG(ERROR, "SMSCommandExecutor::sendCommand failed to obtain CURL object from curl_easy_init");
    return false;
  }
  if (!set(curl, CURLOPT_UNIX_SOCKET_PATH, localApiSocket, "the URL") ||
      !set(curl, CURLOPT_URL, url.c_str(), "the URL") ||
      !set(curl, CURLOPT_POSTFIELDS, body.c_str(), "the post fields"))
    return false;
  header.reset(curl_slist_append(nullptr, "Content-Type: application/json"));
  return set(curl, CURLOPT_HTTPHEADER, header.get(), "the header content") &&
         set(curl, CURLOPT_HEADER, 0L, "header to turn of response header") &&
         set(curl, CURLOPT_FOLLOWLOCATION, 0L, "the FOLLOWLOCATION to zero") &&
         set(curl, CURLOPT_WRITEFUNCTION, appendAnswer, "the WRITEFUNCTION") &&
         set(curl, CURLOPT_WRITEDATA, &answer, "the WRITEDATA buffer") && perform(curl);
}

// Returns the "code" of an answer; 0 if the answer has no "code" that fits an int.
int codeOf(const Json::Value& answer) {
  const Json::Value code = answer.isObject() ? answer["code"] : Json::Value();
  return code.isConvertibleTo(Json::intValue) ? code.asInt() : 0;
}
}  // namespace

SMSCommandExecutor::SMSCommandExecutor(std::string url) : url(std::move(url)) {}

bool SMSCommandExecutor::execute(const std::string& recipient, const std::string& message) {
  const std::string body = bodyBegin(recipient) + "\"message\": \"" + message + "\"}";
  ORVEL_LOG(INFO, "SMSCommandExecutor sending [%s] command to [%s] with [%s] message", url.c_str(),
            recipient.c_str(), message.c_str());
  return postFields(body);
}

bool SMSCommandExecutor::execute(const std::string& recipient, const std::vector<std::string>& args) {
  std::string body = bodyBegin(recipient) + "\"args\": [";
  for (std::size_t i = 0; i < args.size(); ++i) body += (i > 0 ? ",\"" : "\"") + args[i] + "\"";
  body += "]}";
  ORVEL_LOG(DEBUG, "[CMDCTRLR] execute args:%s", body.c_str());
  ORVEL_LOG(INFO, "SMSCommandExecutor sending [%s] command to [%s] with args:", url.c_str(),
            recipient.c_str());
  for (const std::string& arg : args) ORVEL_LOG(INFO, "             %s", arg.c_str());
  return postFields(body);
}

bool SMSCommandExecutor::postFields(const std::string& body) {
  ORVEL_LOG(INFO, "SMSCommandExecutor::execute postFields = %s", body.c_str());
  if (sendCommand(url, body)) return true;
  ORVEL_LOG(ERROR, "SMSCommandExecutor::execute sendCommand failed");
  return false;
}

bool SMSCommandExecutor::sendCommand(const std::string& url, const std::string& body) {
  std::string answer;
  if (!post(url, body, answer)) return false;
  std::cout << "SMSCommandExecutor::sendCommand: buff = [" << answer << "]\n";
  Json::Value envelope;
  if (!parseJson(answer, &envelope)) {
    ORVEL_LOG(ERROR, "SMSCommandExecutor::sendCommand failed to parse Json response object");
    return false;
  }
  const int code = codeOf(envelope);
  if (code == 200) return true;
  ORVEL_LOG(ERROR, "SMSCommandExecutor::sendCommand request failed with response code: %d", code);
  return false;
}
