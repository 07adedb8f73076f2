#pragma once
// Builds crafted recordings for tests: MPs numbered in order, stamped from a start
// time, written with EncodeMp as a record file would be. MP 0 and MP 1 are the system
// marks 0 and 6 unless systemMarks is false:  b.d1(0x41).gap(0.5).level(0, 1).d2(0x42);

#include <cstdint>
#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "record/mp_record.h"

namespace kestrel::test {

class RecordingBuilder {
public:
    // start: the date-time of MP 0; step: seconds between consecutive MPs.
    explicit RecordingBuilder(double start = 45000.5, double stepSeconds = 0.001, bool systemMarks = true)
        : start_(start), stepSeconds_(stepSeconds)
    {
        if (systemMarks) {
            mark(0, kSystemMarkKind, 0);
            mark(6, kSystemMarkKind, 0);
        }
    }

    // Appends an MP carrying the current levels; fields can then be set through last().
    RecordingBuilder &plain()
    {
        MpRecord mp = levels_;
        mp.number = static_cast<std::uint32_t>(mps_.size());
        // From the start and the count, not by summing steps: no drift over long recordings.
        mp.time = start_ + (static_cast<double>(mps_.size()) * stepSeconds_ + gapSeconds_) / 86400.0;
        mps_.push_back(mp);
        return *this;
    }
    RecordingBuilder &d1(std::uint8_t b)
    {
        plain();
        last().d1 = b;
        last().d1Valid = 1;
        return *this;
    }
    RecordingBuilder &d2(std::uint8_t b) { return plain().withD2(b); }
    RecordingBuilder &both(std::uint8_t b1, std::uint8_t b2) { return d1(b1).withD2(b2); }
    // Appends a mark MP (trigger marks: code 1..3, kind = event, extra = trigger number).
    RecordingBuilder &mark(std::uint8_t code, std::uint8_t kind, std::uint8_t extra)
    {
        plain();
        last().markCode = code;
        last().markKind = kind;
        last().markExtra = extra;
        return *this;
    }
    // Sets a level that every later MP carries: index 0..5 = S1, M1, S2, M2, M5, M3.
    RecordingBuilder &level(int index, std::uint8_t value)
    {
        std::uint8_t *lv[6] = {&levels_.s1, &levels_.m1, &levels_.s2, &levels_.m2, &levels_.m5, &levels_.m3};
        *lv[index] = value;
        return *this;
    }
    RecordingBuilder &gap(double seconds)
    {
        gapSeconds_ += seconds;
        return *this;
    }

    MpRecord &last() { return mps_.back(); }
    [[nodiscard]] const std::vector<MpRecord> &mps() const { return mps_; }

    // The file's bytes.
    [[nodiscard]] std::string bytes() const
    {
        std::string out;
        for (const MpRecord &mp : mps_) {
            const MpBytes b = EncodeMp(mp);
            out.append(reinterpret_cast<const char *>(b.data()), b.size());
        }
        return out;
    }

    // Writes the file; extraBytes adds a torn tail that is not a whole record.
    void write(const std::string &path, std::size_t extraBytes = 0) const
    {
        std::ofstream f(path, std::ios::binary | std::ios::trunc);
        if (!f)
            throw std::runtime_error("cannot create " + path);
        for (const MpRecord &mp : mps_) {
            const MpBytes b = EncodeMp(mp);
            f.write(reinterpret_cast<const char *>(b.data()), static_cast<std::streamsize>(b.size()));
        }
        for (std::size_t i = 0; i < extraBytes; ++i)
            f.put('\x5a');
        if (!f)
            throw std::runtime_error("cannot write " + path);
    }

    // count plain MPs numbered 0.. with d1 = the low byte of the number, no marks.
    static void writeNumbered(const std::string &path, std::uint32_t count, std::size_t extraBytes = 0)
    {
        RecordingBuilder b(45000.5, 0.001, false);
        for (std::uint32_t i = 0; i < count; ++i)
            b.d1(static_cast<std::uint8_t>(i));
        b.write(path, extraBytes);
    }

private:
    RecordingBuilder &withD2(std::uint8_t b)
    {
        last().d2 = b;
        last().d2Valid = 1;
        return *this;
    }

    std::vector<MpRecord> mps_;
    MpRecord levels_;
    double start_;
    double stepSeconds_;
    double gapSeconds_ = 0.0;
};

} // namespace kestrel::test
