#include "platform/posix/kernel/letter_case.h"

namespace kor {
namespace {

// Lower-case units first..last, each `step`-th of them, have their capitals `distance` below.
struct CaseRange {
    char16_t first;
    char16_t last;
    int step;
    int distance;
};

constexpr CaseRange kRanges[] = {
    {u'a', u'z', 1, 32},     {0x00E0, 0x00F6, 1, 32}, {0x00F8, 0x00FE, 1, 32}, {0x00FF, 0x00FF, 1, -0x79},
    {0x0101, 0x012F, 2, 1},  {0x0133, 0x0137, 2, 1},  {0x013A, 0x0148, 2, 1},  {0x014B, 0x0177, 2, 1},
    {0x017A, 0x017E, 2, 1},  {0x01CE, 0x01DC, 2, 1},  {0x01DF, 0x01EF, 2, 1},  {0x01FB, 0x0217, 2, 1},
    {0x03AC, 0x03AC, 1, 38}, {0x03AD, 0x03AF, 1, 37}, {0x03B1, 0x03C1, 1, 32}, {0x03C3, 0x03CB, 1, 32},
    {0x03CC, 0x03CC, 1, 64}, {0x03CD, 0x03CE, 1, 63}, {0x0430, 0x044F, 1, 32}, {0x0450, 0x045F, 1, 80},
    {0x0461, 0x0481, 2, 1},  {0x048B, 0x04BF, 2, 1},  {0x04D1, 0x04FF, 2, 1},  {0x0561, 0x0586, 1, 48},
    {0x1E01, 0x1E95, 2, 1},  {0x1EA1, 0x1EFF, 2, 1},  {0x2170, 0x217F, 1, 16}, {0x24D0, 0x24E9, 1, 26},
    {0xFF41, 0xFF5A, 1, 32},
};

constexpr char16_t shifted(char16_t unit, int distance) { return static_cast<char16_t>(unit + distance); }

}  // namespace

char16_t upperCase(char16_t unit) {
    if (unit < 0x80) return unit >= u'a' && unit <= u'z' ? shifted(unit, -32) : unit;
    for (const CaseRange& range : kRanges) {
        if (unit < range.first || unit > range.last) continue;
        return (unit - range.first) % range.step == 0 ? shifted(unit, -range.distance) : unit;
    }
    return unit;
}

char16_t lowerCase(char16_t unit) {
    if (unit < 0x80) return unit >= u'A' && unit <= u'Z' ? shifted(unit, 32) : unit;
    for (const CaseRange& range : kRanges) {
        const char16_t candidate = shifted(unit, range.distance);
        if (candidate < range.first || candidate > range.last) continue;
        if ((candidate - range.first) % range.step == 0) return candidate;
    }
    return unit;
}

}  // namespace kor
