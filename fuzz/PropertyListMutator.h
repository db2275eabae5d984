#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace tallyforge::fuzz {

/// Changes a property list as the tree that it is and writes it again in its own form; bytes that are none,
/// and every second time those that are, change as bytes. The words are texts that matter to the target.
/// To be called from LLVMFuzzerCustomMutator; returns the new size.
size_t MutatePropertyList(uint8_t* data, size_t size, size_t most, unsigned seed,
                          std::span<const std::string_view> words);

} // namespace tallyforge::fuzz
