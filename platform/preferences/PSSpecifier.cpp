#include "preferences/PSSpecifier.h"

#include "corefoundation/NSUserDefaults.h"

#include <algorithm>

namespace tallyforge {

namespace {

std::string ShownText(const PropertyList& value) {
    const std::string* text = value.asString();
    return text ? *text : value.description();
}

/// A list may name any method of its screen as the one that knows a row's value or choices, one that changes
/// settings too: rows are then shown again, which asks them again. While one method answers, no other is
/// asked.
class Asking {
  public:
    Asking() : first_(!anybody_) { anybody_ = true; }
    ~Asking() {
        if (first_) anybody_ = false;
    }
    Asking(const Asking&) = delete;
    Asking& operator=(const Asking&) = delete;
    bool allowed() const { return first_; }

  private:
    static inline bool anybody_ = false;
    bool first_;
};

MethodResult Ask(NSObject& target, const std::string& selector, const PSSpecifierRef& row) {
    const Asking asking;
    return asking.allowed() ? PerformSelector(target, selector, {nullptr, row}) : nullptr;
}

} // namespace

std::string PSSpecifier::textForKey(std::string_view key) const {
    const PropertyList* value = propertyForKey(key);
    const std::string* text = value ? value->asString() : nullptr;
    return text ? *text : std::string();
}

std::optional<std::string> PSSpecifier::textIfSet(std::string_view key) const {
    const PropertyList* value = propertyForKey(key);
    return value && value->isString() ? std::optional(*value->asString()) : std::nullopt;
}

bool PSSpecifier::flagForKey(std::string_view key, bool absent) const {
    const PropertyList* value = propertyForKey(key);
    return value && (value->isNumber() || value->isString()) ? value->boolValue() : absent;
}

double PSSpecifier::numberForKey(std::string_view key, double absent) const {
    const PropertyList* value = propertyForKey(key);
    return value && value->isNumber() ? value->doubleValue() : absent;
}

std::string PSSpecifier::identifier() const {
    const PropertyList* own = propertyForKey("id");
    return own && own->isString() ? *own->asString() : textForKey("key");
}

std::shared_ptr<NSObject> PSSpecifier::objectForKey(std::string_view key) const {
    auto found = objects_.find(key);
    return found == objects_.end() ? nullptr : found->second.lock();
}

void PSSpecifier::setObjectForKey(const std::weak_ptr<NSObject>& object, std::string_view key) {
    objects_.insert_or_assign(std::string(key), object);
}

std::vector<PSSpecifier::Choice> PSSpecifier::choices() {
    // What a data source gives is held as long as it is looked at.
    MethodResult given[2];
    auto list = [&](std::string_view own, std::string_view source, MethodResult& kept) {
        const PropertyList* value = propertyForKey(own);
        std::string selector = textForKey(source);
        if (!value && target_ && !selector.empty()) {
            kept = Ask(*target_, selector, self_.lock());
            value = kept.get();
        }
        return value ? value->asArray() : nullptr;
    };
    const PropertyList::Array* values = list("validValues", "valuesDataSource", given[0]);
    const PropertyList::Array* titles = list("validTitles", "titlesDataSource", given[1]);
    std::vector<Choice> choices;
    if (!values || !titles) return choices;
    for (size_t i = 0; i < std::min(values->size(), titles->size()); ++i)
        choices.push_back({(*values)[i], ShownText((*titles)[i])});
    return choices;
}

std::optional<PropertyList> PSSpecifier::performGetter() {
    if (!target_) return std::nullopt;
    const std::string getter = textForKey("get");
    const MethodResult value =
        getter.empty() ? PerformSelector(*target_, "readPreferenceValue:", {nullptr, self_.lock()})
                       : Ask(*target_, getter, self_.lock());
    return value ? std::optional(*value) : std::nullopt;
}

void PSSpecifier::performSetter(const PropertyList& value) {
    if (!target_) return;
    const std::string setter = textForKey("set");
    PerformSelector(*target_, setter.empty() ? "setPreferenceValue:specifier:" : setter,
                    {&value, self_.lock()});
    // A row with a setter of its own leaves it to that one when to save.
    if (setter.empty()) NSUserDefaults::standardUserDefaults().synchronize();
}

} // namespace tallyforge
