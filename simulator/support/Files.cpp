#include "simulator/support/Files.h"

#include <json/reader.h>
#include <json/writer.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>

namespace Simulator {
std::string readFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

bool writeFile(const std::string& path, const std::string& content) {
  const std::string temporary = path + ".new";
  std::ofstream file(temporary, std::ios::binary);
  file << content;
  file.close();
  if (file && std::rename(temporary.c_str(), path.c_str()) == 0) return true;
  std::remove(temporary.c_str());
  return false;
}

bool appendFile(const std::string& path, const std::string& content) {
  std::ofstream file(path, std::ios::binary | std::ios::app);
  file << content;
  file.close();
  return bool(file);
}

std::vector<std::string> listFolder(const std::string& path) {
  std::vector<std::string> names;
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator(path, error))
    names.push_back(entry.path().filename());
  std::sort(names.begin(), names.end());
  return names;
}

Json::Value object(std::initializer_list<std::pair<const char*, Json::Value>> members) {
  Json::Value value(Json::objectValue);
  for (const auto& [name, member] : members) value[name] = member;
  return value;
}

std::string toLine(const Json::Value& value) {
  Json::StreamWriterBuilder builder;
  builder["indentation"] = "";
  builder["emitUTF8"] = true;
  return Json::writeString(builder, value);
}

bool readJson(const std::string& text, Json::Value& value) {
  Json::CharReaderBuilder builder;
  builder["failIfExtra"] = true;
  builder["rejectDupKeys"] = true;
  const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
  try {
    return reader->parse(text.data(), text.data() + text.size(), &value, nullptr);
  } catch (const Json::Exception&) {  // the text contains too many nested values
    return false;
  }
}

Json::Value jsonOrText(const std::string& text) {
  Json::Value value;
  return readJson(text, value) ? value : Json::Value(text);
}
}  // namespace Simulator
