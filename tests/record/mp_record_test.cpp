#include <gtest/gtest.h>

#include <utility>

#include "record/mp_record.h"

using namespace kestrel;

TEST(MpRecord, EncodesLittleEndianAtTheDocumentedOffsets)
{
    MpRecord mp;
    mp.number = 0x04030201;
    mp.time = 1.5; // 0x3FF8000000000000
    mp.d1 = 0xAA;
    mp.d2 = 0x55;
    mp.d1Valid = 1;
    mp.m3 = 1;
    mp.leD2 = 1;
    mp.counts[0] = 0x0102030405060708ULL;
    mp.counts[4] = 7;
    mp.loadActual = 101; // stored without clamping
    mp.markCode = 5;
    mp.markKind = kSystemMarkKind;
    mp.markExtra = 3;
    const MpBytes b = EncodeMp(mp);
    // Offset and byte: number, time, data, valid flag, M3, LE D2, counters, load, mark.
    constexpr std::pair<int, int> expected[] = {{0, 0x01},  {3, 0x04},  {14, 0xF8}, {15, 0x3F}, {16, 0xAA}, {17, 0x55},
                                                {18, 1},    {25, 1},    {31, 1},    {32, 0x08}, {39, 0x01}, {64, 7},
                                                {72, 101},  {75, 5},    {76, 99},   {77, 3}};
    for (const auto &[offset, value] : expected)
        EXPECT_EQ(b[static_cast<std::size_t>(offset)], value) << "offset " << offset;
    EXPECT_EQ(DecodeMp(b.data()), mp);
}

TEST(MpRecord, DecodeKeepsEveryByteOfARandomRecord)
{
    MpBytes in;
    for (std::size_t i = 0; i < kMpSize; ++i)
        in[i] = static_cast<std::uint8_t>(i * 37 + 11);
    EXPECT_EQ(EncodeMp(DecodeMp(in.data())), in);
}
