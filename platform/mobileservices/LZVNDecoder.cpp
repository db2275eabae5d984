#include "mobileservices/CatalogCompression.h"
#include "mobileservices/SlidingCopy.h"

namespace tallyforge {

namespace {

/// One instruction: so many plain bytes follow it, then so many are repeated from so far back.
struct Instruction {
    size_t literals = 0;
    size_t match = 0;
    size_t distance = 0; // 0: as far as the time before
};

enum class Opcode { copy, nothing, end, unknown };

// Where the letters L, M and D of the comments stand, the bits of those numbers stand.
Opcode ReadInstruction(ByteReader& in, Instruction& instruction) {
    uint8_t op = in.u8();
    if (op >= 0xF0) { // 1111MMMM, or a whole byte of M when these are zero
        instruction.match = op & 15 ? op & 15 : in.u8() + 16u;
        return Opcode::copy;
    }
    if (op >= 0xE0) { // 1110LLLL, or a whole byte of L when these are zero
        instruction.literals = op & 15 ? op & 15 : in.u8() + 16u;
        return Opcode::copy;
    }
    if (op >= 0xD0 || (op >= 0x70 && op < 0x80)) return Opcode::unknown;
    if (op >= 0xA0 && op < 0xC0) { // 101LLMMM DDDDDDMM DDDDDDDD
        uint16_t rest = in.little16();
        instruction.literals = (op >> 3) & 3;
        instruction.match = ((op & 7u) << 2 | (rest & 3u)) + 3;
        instruction.distance = rest >> 2;
        return instruction.distance ? Opcode::copy : Opcode::unknown;
    }

    instruction.literals = op >> 6;
    instruction.match = ((op >> 3) & 7) + 3;
    switch (op & 7) {
    case 6: // LLMMM110, of which those without L mean other things
        if (op == 0x06) return Opcode::end;
        if (op == 0x0E || op == 0x16) return Opcode::nothing;
        return instruction.literals ? Opcode::copy : Opcode::unknown;
    case 7: // LLMMM111 and two bytes of D
        instruction.distance = in.little16();
        break;
    default: // LLMMMDDD and a byte of D
        instruction.distance = (op & 7u) << 8;
        instruction.distance |= in.u8();
    }
    return instruction.distance ? Opcode::copy : Opcode::unknown;
}

} // namespace

bool AppendLZVN(Bytes packed, size_t most, std::vector<uint8_t>& out) {
    ByteReader in(packed);
    SlidingCopy copy(out, most);
    size_t distance = 0;
    for (;;) {
        Instruction instruction;
        Opcode opcode = ReadInstruction(in, instruction);
        if (!in.ok() || opcode == Opcode::unknown) return false;
        if (opcode == Opcode::end) return true;
        if (opcode == Opcode::nothing) continue;
        if (instruction.distance) distance = instruction.distance;
        Bytes literals = in.take(instruction.literals);
        if (!in.ok() || !copy.literals(literals) || !copy.match(instruction.match, distance)) return false;
    }
}

} // namespace tallyforge
