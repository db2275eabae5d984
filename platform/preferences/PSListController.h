#pragma once

#include "preferences/PSSpecifier.h"
#include "runtime/ClassRegistry.h"

#include <memory>
#include <optional>
#include <string_view>
#include <vector>

namespace tallyforge {

using PSSpecifierRef = std::shared_ptr<PSSpecifier>;

/// A settings screen: a list of rows, each made for a specifier, whose values live in preference domains.
class PSListController : public NSObject {
  public:
    /// The rows, loaded at the first call and kept.
    virtual const std::vector<PSSpecifierRef>& specifiers() { return specifiers_; }
    /// The row whose "id" this is (or, where a row has no "id", its "key"); nullptr without one.
    PSSpecifierRef specifierForID(std::string_view identifier);
    /// Writes the value into the row's "defaults" domain under its "key", durably; posts the row's
    /// "PostNotification" system-wide where it has one. A row without domain or key keeps nothing; nor does
    /// no row.
    void setPreferenceValueSpecifier(const PropertyList& value, const PSSpecifierRef& specifier);
    /// The row's value: what its domain holds, else its "default"; nothing without either.
    std::optional<PropertyList> readPreferenceValue(const PSSpecifierRef& specifier);
    /// Shows the row's present value again.
    virtual void reloadSpecifier(const PSSpecifierRef& specifier);

  protected:
    std::vector<PSSpecifierRef> specifiers_;
};

} // namespace tallyforge
