// log_application::JsonObject: builds the text of one JSON object.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace log_application {

// Text is converted to UTF-8 as by `utf8Of`. Members are written in the order in which they are
// added. Keys aren't checked for duplicates.
class JsonObject {
  public:
    void add(std::string_view key, std::string_view text);
    void add(std::string_view key, std::int64_t number);
    void add(std::string_view key, bool value);
    void addNull(std::string_view key);
    void add(std::string_view key, const JsonObject& object);

    // `json` is inserted as it is.
    void addJson(std::string_view key, std::string_view json);

    // Adds null for an empty optional.
    template <class Value>
    void add(std::string_view key, const std::optional<Value>& value) {
        if (!value) {
            addNull(key);
        } else if constexpr (std::is_integral_v<Value>) {
            add(key, std::int64_t{*value});
        } else {
            add(key, std::string_view(*value));
        }
    }

    // The object on one line.
    std::string text() const { return "{" + members + "}"; }

  private:
    void addKey(std::string_view key);

    std::string members;
};

}  // namespace log_application
