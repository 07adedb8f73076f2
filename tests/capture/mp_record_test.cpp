#include <gtest/gtest.h>

#include "capture/mp_record.h"

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
    EXPECT_EQ(b[0], 0x01);
    EXPECT_EQ(b[3], 0x04);
    EXPECT_EQ(b[14], 0xF8);
    EXPECT_EQ(b[15], 0x3F);
    EXPECT_EQ(b[16], 0xAA);
    EXPECT_EQ(b[17], 0x55);
    EXPECT_EQ(b[18], 1);
    EXPECT_EQ(b[25], 1);
    EXPECT_EQ(b[31], 1);
    EXPECT_EQ(b[32], 0x08);
    EXPECT_EQ(b[39], 0x01);
    EXPECT_EQ(b[64], 7);
    EXPECT_EQ(b[72], 101);
    EXPECT_EQ(b[75], 5);
    EXPECT_EQ(b[76], 99);
    EXPECT_EQ(b[77], 3);
    EXPECT_EQ(DecodeMp(b.data()), mp);
}

TEST(MpRecord, DecodeKeepsEveryByteOfARandomRecord)
{
    MpBytes in;
    for (std::size_t i = 0; i < kMpSize; ++i)
        in[i] = static_cast<std::uint8_t>(i * 37 + 11);
    EXPECT_EQ(EncodeMp(DecodeMp(in.data())), in);
}
