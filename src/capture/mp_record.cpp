#include "capture/mp_record.h"

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
    putU32(out + 0, mp.number);
    std::memcpy(out + 4, mp.reserved1, 4);
    putU64(out + 8, std::bit_cast<std::uint64_t>(mp.time));
    const std::uint8_t bytes[16] = {mp.d1,   mp.d2,   mp.d1Valid, mp.d2Valid, mp.s1,   mp.m1,
                                    mp.s2,   mp.m2,   mp.m5,      mp.m3,      mp.peD1, mp.feD1,
                                    mp.leD1, mp.peD2, mp.feD2,    mp.leD2};
    std::memcpy(out + 16, bytes, 16);
    for (int i = 0; i < 5; ++i)
        putU64(out + 32 + 8 * i, mp.counts[i]);
    out[72] = mp.loadActual;
    out[73] = mp.loadPeak;
    out[74] = mp.quality;
    out[75] = mp.markCode;
    out[76] = mp.markKind;
    out[77] = mp.markExtra;
    std::memcpy(out + 78, mp.reserved2, 2);
}

MpRecord DecodeMp(const std::uint8_t *in)
{
    MpRecord mp;
    mp.number = getU32(in + 0);
    std::memcpy(mp.reserved1, in + 4, 4);
    mp.time = std::bit_cast<double>(getU64(in + 8));
    std::uint8_t *const fields[16] = {&mp.d1,   &mp.d2,   &mp.d1Valid, &mp.d2Valid, &mp.s1,   &mp.m1,
                                      &mp.s2,   &mp.m2,   &mp.m5,      &mp.m3,      &mp.peD1, &mp.feD1,
                                      &mp.leD1, &mp.peD2, &mp.feD2,    &mp.leD2};
    for (int i = 0; i < 16; ++i)
        *fields[i] = in[16 + i];
    for (int i = 0; i < 5; ++i)
        mp.counts[i] = getU64(in + 32 + 8 * i);
    mp.loadActual = in[72];
    mp.loadPeak = in[73];
    mp.quality = in[74];
    mp.markCode = in[75];
    mp.markKind = in[76];
    mp.markExtra = in[77];
    std::memcpy(mp.reserved2, in + 78, 2);
    return mp;
}

} // namespace kestrel
