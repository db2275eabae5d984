#pragma once

#include "foundation/PropertyList.h"

#include <cstdint>
#include <initializer_list>
#include <random>
#include <string>

namespace tallyforge::test {

/// Makes settings domains as no person would write them: every key absent, within its range, or anything else
/// that a property list can hold.
class RandomDomain {
  public:
    explicit RandomDomain(uint32_t seed) : random_(seed) {}

    /// With `wild`, some numbers are infinite, no number, or beyond single precision.
    Dictionary next(bool wild = false);

  private:
    uint32_t below(uint32_t count) { return random_() % count; }
    template <class T>
    T oneOf(std::initializer_list<T> choices) {
        return choices.begin()[below(static_cast<uint32_t>(choices.size()))];
    }
    float between(float min, float max);
    PropertyList ofAnyKind(double number);
    PropertyList color();
    PropertyList code();
    PropertyList number(float min, float max);
    PropertyList wildNumber();
    PropertyList noScalar();

    std::mt19937 random_;
};

/// The domain as lines of text, for messages.
std::string DomainText(const Dictionary& domain);

} // namespace tallyforge::test
