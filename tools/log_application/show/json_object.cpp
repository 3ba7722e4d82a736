#include "tools/log_application/show/json_object.h"

#include "tools/log_application/show/ansi_text.h"
#include "tools/log_application/show/escape.h"

namespace log_application {

void JsonObject::addKey(std::string_view key) {
    if (!members.empty()) {
        members += ',';
    }
    appendJsonString(members, utf8Of(key));
    members += ':';
}

void JsonObject::add(std::string_view key, std::string_view text) {
    addKey(key);
    appendJsonString(members, utf8Of(text));
}

void JsonObject::add(std::string_view key, std::int64_t number) {
    addKey(key);
    members += std::to_string(number);
}

void JsonObject::add(std::string_view key, bool value) {
    addKey(key);
    members += value ? "true" : "false";
}

void JsonObject::addNull(std::string_view key) {
    addKey(key);
    members += "null";
}

void JsonObject::add(std::string_view key, const JsonObject& object) {
    addJson(key, object.text());
}

void JsonObject::addJson(std::string_view key, std::string_view json) {
    addKey(key);
    members += json;
}

}  // namespace log_application
