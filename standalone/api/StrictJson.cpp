#include "standalone/api/StrictJson.h"

#include <algorithm>
#include <memory>

#include "support/Text.h"

namespace Standalone {
std::optional<Json::Value> parseStrictJson(const std::string& text, std::string& fault) {
  Json::CharReaderBuilder builder;
  Json::CharReaderBuilder::strictMode(&builder.settings_);
  const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
  Json::Value value;
  try {
    if (reader->parse(text.data(), text.data() + text.size(), &value, &fault)) return value;
  } catch (const Json::Exception& exception) {
    fault = exception.what();  // the parser throws only when the nesting is too deep
  }
  std::replace(fault.begin(), fault.end(), '\n', ' ');
  fault = Orvel::Text::trim(fault);
  return std::nullopt;
}

std::string toLine(const Json::Value& value) {
  Json::StreamWriterBuilder builder;
  builder["indentation"] = "";
  return Json::writeString(builder, value);
}
}  // namespace Standalone
