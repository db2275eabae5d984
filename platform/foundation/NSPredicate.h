#pragma once

#include "foundation/PropertyList.h"
#include "foundation/Result.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tallyforge {

/// A condition on an object, which is asked for its attributes by name.
///
/// Formats are made of "KEY contains 'TEXT'", "KEY == 'TEXT'", "not", "and", "or" and parentheses; "%@"
/// stands for an argument; words may be written in capitals. "contains" looks for a part of a text or an item
/// of a list. An attribute that is not there contains nothing and equals nothing.
class NSPredicate {
  public:
    using Value = std::shared_ptr<const PropertyList>;
    /// An attribute by its name; nothing when the object has none.
    using Attributes = std::function<Value(std::string_view key)>;

    /// Fails with the place where the format is not understood, or when it wants more arguments than it gets.
    static Result<NSPredicate> predicateWithFormat(std::string_view format,
                                                   const std::vector<PropertyList>& arguments = {});
    /// All of them must hold; of none, that is so.
    static NSPredicate andPredicateWithSubpredicates(std::vector<NSPredicate> parts);

    bool evaluateWithObject(const Attributes& attributes) const { return holds_(attributes); }

  private:
    using Condition = std::function<bool(const Attributes&)>;
    friend class NSPredicateParser;
    explicit NSPredicate(Condition holds) : holds_(std::move(holds)) {}
    Condition holds_;
};

} // namespace tallyforge
