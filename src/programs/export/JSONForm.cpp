#include "programs/export/JSONForm.h"

#include <nlohmann/json.hpp>

#include "platform/base/Error.h"
#include "platform/foundation/Base64.h"
#include "programs/export/JSONValues.h"

namespace quillet {

using json = nlohmann::ordered_json;
using platform::Array;
using platform::Dictionary;
using platform::Value;

namespace {

struct Converter {
    json operator()(std::monostate) const { return nullptr; }
    json operator()(bool boolean) const { return boolean; }
    json operator()(std::int64_t integer) const { return integer; }
    json operator()(double real) const { return real; }
    json operator()(const std::u16string& text) const { return platform::utf8FromUTF16(text); }
    json operator()(const platform::Data& data) const { return platform::base64Encoded(data.bytes()); }
    json operator()(const platform::Date& date) const { return date.iso8601(); }
    json operator()(platform::UID uid) const { return uid.value; }
    json operator()(const Array& array) const {
        json list = json::array();
        for (const Value& value : array) list.push_back(std::visit(*this, value.variant()));
        return list;
    }
    json operator()(const Dictionary& dictionary) const {
        json object = json::object();
        for (const auto& [key, value] : dictionary) object[key] = std::visit(*this, value.variant());
        return object;
    }
    json operator()(const Value::ErrorReference& error) const {
        return {{"domain", error->domain},
                {"code", error->code},
                {"localizedDescription", error->localizedDescription()},
                {"userInfo", (*this)(error->userInfo)}};
    }
};

} // namespace

json jsonFromValue(const Value& value) {
    return std::visit(Converter(), value.variant());
}

std::string jsonText(const json& tree) {
    // Texts come from UTF-16 and names from files: the replacing mode keeps ill-formed UTF-8 from being thrown.
    return tree.dump(-1, ' ', false, json::error_handler_t::replace);
}

// A list's elements are written one by one: a reply may list hundreds of thousands of notes, and the tree of all would
// take many times the room of its text.
std::string jsonLine(const Dictionary& dictionary) {
    std::string line = "{";
    for (const auto& [key, value] : dictionary) {
        if (line.size() > 1) line += ',';
        line += jsonText(key) + ':';
        const Array* list = value.as<Array>();
        if (!list) {
            line += jsonText(jsonFromValue(value));
            continue;
        }
        line += '[';
        for (const Value& element : *list) {
            if (&element != &list->front()) line += ',';
            line += jsonText(jsonFromValue(element));
        }
        line += ']';
    }
    return line + '}';
}

} // namespace quillet
