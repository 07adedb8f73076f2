#pragma once
// The lines of a CSV export (RFC 4180 style): one head line with the column
// names and one data line per MP, fields framed and each followed by the
// separator, so every line ends with a separator. Line ends ("\r\n") are the
// caller's.
//
//   BuildCSVHeadLine(options)            the head line
//   BuildCSVFileLine(mp, options, time)  the line of one MP (time: the running time state)
//   CsvLineWriter(options).append(out, mp, time)   the same for the export loop
//   BuildCSVColumn(byte, frame)          the raw column of one data byte
//   AppendFramed(out, text, frame)       frame + text + frame, frame characters doubled

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "present/column_texts.h"
#include "record/mp_record.h"
#include "export/export_options.h"
#include "export/export_time.h"

namespace kestrel {

[[nodiscard]] std::string BuildCSVHeadLine(const ExportOptions &options);

[[nodiscard]] std::string BuildCSVFileLine(const MpRecord &mp, const ExportOptions &options, ExportTimeState &time);

// The data line builder of a running export: everything that depends only on
// the options and a byte value (framed number columns, level and error
// fields, control names) is prepared once, so a line costs a few appends.
class CsvLineWriter {
public:
    explicit CsvLineWriter(const ExportOptions &options);
    // index: the MP's place in the file, the number the line shows (the 32-bit number on disk wraps).
    void append(std::string &out, const MpRecord &mp, std::uint64_t index, ExportTimeState &time) const;

private:
    ExportOptions o_;
    std::array<std::string, 256> dataColumns_; // raw + HEX/DEC/OCT/BIN of each byte, framed, separated
    std::string emptyDataColumns_;             // the same columns for an MP without a byte
    std::string levelField_[2];                // "0" and "1", framed, separated
    std::array<std::string, 8> errorField_;    // P/F/L letters of each flag combination
    std::string emptyField_;
};

// The byte as one character, framed; a byte equal to the frame character is
// doubled inside the frame. Bytes from 0x80 on are written as the Latin-1
// character of that code (two bytes of UTF-8), so the file stays valid UTF-8.
[[nodiscard]] std::string BuildCSVColumn(std::uint8_t byte, char frame);

void AppendFramed(std::string &out, std::string_view text, char frame);


} // namespace kestrel
