#include "cli/ValueJson.h"

#include "cli/Report.h"

#include <nlohmann/json.hpp>

#include <charconv>

namespace tallyforge {

nlohmann::ordered_json ValueJson(const PropertyList& value) {
    using Json = nlohmann::ordered_json;
    switch (value.kind()) {
    case PropertyList::Kind::boolean:
        return value.boolValue();
    case PropertyList::Kind::integer:
        return value.isLargeUnsigned() ? Json(static_cast<uint64_t>(value.integerBits()))
                                       : Json(value.integerBits());
    case PropertyList::Kind::floatNumber: {
        std::string digits = value.description();
        double number = 0;
        auto [end, failed] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
        return failed == std::errc() ? Json(number) : Json(value.doubleValue());
    }
    case PropertyList::Kind::doubleNumber:
        return value.doubleValue();
    case PropertyList::Kind::string:
        return *value.asString();
    case PropertyList::Kind::array: {
        Json items = Json::array();
        for (const PropertyList& item : *value.asArray())
            items.push_back(ValueJson(item));
        return items;
    }
    case PropertyList::Kind::dictionary: {
        Json entries = Json::object();
        for (const auto& [key, item] : *value.asDictionary())
            entries[key] = ValueJson(item);
        return entries;
    }
    default:
        return nullptr;
    }
}

void PrintJson(const nlohmann::ordered_json& json) {
    Print(json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n");
}

} // namespace tallyforge
