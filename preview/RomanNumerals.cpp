#include "preview/RomanNumerals.h"

namespace tallyforge {

std::string RomanNumeral(uint32_t n) {
    struct Letters {
        uint32_t value;
        const char* text;
    };
    constexpr Letters kLetters[] = {{1000, "M"}, {900, "CM"}, {500, "D"}, {400, "CD"}, {100, "C"},
                                    {90, "XC"},  {50, "L"},   {40, "XL"}, {10, "X"},   {9, "IX"},
                                    {5, "V"},    {4, "IV"},   {1, "I"}};
    std::string roman;
    for (const Letters& letters : kLetters) {
        for (; n >= letters.value; n -= letters.value)
            roman += letters.text;
    }
    return roman;
}

} // namespace tallyforge
