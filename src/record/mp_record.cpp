#include "record/mp_record.h"

#include <bit>
#include <cstring>

namespace kestrel {
namespace {

void putU32(std::uint8_t *p, std::uint32_t v)
{
    for (int i = 0; i < 4; ++i)
        p[i] = static_cast<std::uint8_t>(v >> (8 * i));
}
void putU64(std::uint8_t *p, std::uint64_t v)
{
    for (int i = 0; i < 8; ++i)
        p[i] = static_cast<std::uint8_t>(v >> (8 * i));
}
std::uint32_t getU32(const std::uint8_t *p)
{
    std::uint32_t v = 0;
    for (int i = 3; i >= 0; --i)
        v = (v << 8) | p[i];
    return v;
}
std::uint64_t getU64(const std::uint8_t *p)
{
    std::uint64_t v = 0;
    for (int i = 7; i >= 0; --i)
        v = (v << 8) | p[i];
    return v;
}

} // namespace

void EncodeMp(const MpRecord &mp, std::uint8_t *out)
{
    using namespace MpField;
    putU32(out + Number, mp.number);
    std::memcpy(out + Reserved1, mp.reserved1, 4);
    putU64(out + Time, std::bit_cast<std::uint64_t>(mp.time));
    const std::uint8_t bytes[16] = {mp.d1,   mp.d2,   mp.d1Valid, mp.d2Valid, mp.s1,   mp.m1,
                                    mp.s2,   mp.m2,   mp.m5,      mp.m3,      mp.peD1, mp.feD1,
                                    mp.leD1, mp.peD2, mp.feD2,    mp.leD2};
    std::memcpy(out + D1, bytes, 16);
    for (int i = 0; i < 5; ++i)
        putU64(out + Counts + 8 * i, mp.counts[i]);
    out[LoadActual] = mp.loadActual;
    out[LoadPeak] = mp.loadPeak;
    out[Quality] = mp.quality;
    out[MarkCode] = mp.markCode;
    out[MarkKind] = mp.markKind;
    out[MarkExtra] = mp.markExtra;
    std::memcpy(out + Reserved2, mp.reserved2, 2);
}

MpRecord DecodeMp(const std::uint8_t *in)
{
    using namespace MpField;
    MpRecord mp;
    mp.number = getU32(in + Number);
    std::memcpy(mp.reserved1, in + Reserved1, 4);
    mp.time = std::bit_cast<double>(getU64(in + Time));
    std::uint8_t *const fields[16] = {&mp.d1,   &mp.d2,   &mp.d1Valid, &mp.d2Valid, &mp.s1,   &mp.m1,
                                      &mp.s2,   &mp.m2,   &mp.m5,      &mp.m3,      &mp.peD1, &mp.feD1,
                                      &mp.leD1, &mp.peD2, &mp.feD2,    &mp.leD2};
    for (int i = 0; i < 16; ++i)
        *fields[i] = in[D1 + i];
    for (int i = 0; i < 5; ++i)
        mp.counts[i] = getU64(in + Counts + 8 * i);
    mp.loadActual = in[LoadActual];
    mp.loadPeak = in[LoadPeak];
    mp.quality = in[Quality];
    mp.markCode = in[MarkCode];
    mp.markKind = in[MarkKind];
    mp.markExtra = in[MarkExtra];
    std::memcpy(mp.reserved2, in + Reserved2, 2);
    return mp;
}

} // namespace kestrel
