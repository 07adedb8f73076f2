#pragma once
// The settings of one export, as the export dialog shows them when it comes
// up: CSV, semicolon, double quote as frame, head line on, every column on,
// every MP.

#include <cstdint>

#include "base/string_table.h"

namespace kestrel {

enum class ExportFormat { Raw, Csv };

inline constexpr char kNoFrame = '\0'; // the "{keine}" choice: fields stand unframed

// One flag per check box of the dialog.
struct ExportColumns {
    bool prefix = true;      // mark/trigger (cbEventPrefix)
    bool mpNo = true;        // cbEventMPNo
    bool timestamp = true;   // cbEventTimestamp
    bool d1 = true, d2 = true;                            // cbEventD1, cbEventD2
    bool hex = true, dec = true, oct = true, bin = true;  // cbDataHEX ... cbDataBIN
    bool s1 = true, m1 = true, s2 = true, m2 = true, m5 = true, m3 = true;
    bool pfl = true;         // cbEventPFL
    bool description = true; // cbDescription
};

struct ExportOptions {
    ExportFormat format = ExportFormat::Csv;
    char separator = ';';  // ',', ';', '\t' or ' '
    char frame = '"';      // '"', '\'' or kNoFrame
    bool header = true;
    ExportColumns columns;
    int timeMode = 0;      // 0 absolute/local, 1 relative, 2 delta
    int langOffset = kLangGerman;
    int naming = 0;        // 0 V.24 circuit names (D1, D2, S1 ...), 1 RS-232 names (Tx, Rx, DTR ...)
};

// Circuits in the order of the export's columns.
enum class Circuit { D1 = 0, D2, S1, M1, S2, M2, M5, M3 };

// "D1" / "Tx", "S1" / "DTR", ... by naming set.
[[nodiscard]] const char *CircuitName(Circuit c, int naming);

} // namespace kestrel
