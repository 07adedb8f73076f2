#pragma once
// Numbers of the report's texts in the string table (German number; English
// is n + 10000). Error texts are also the codes of the Results they end.

namespace kestrel::report::txt {

inline constexpr int kReport = 7820;
inline constexpr int kAuthor = 7822;
inline constexpr int kCompany = 7823;
inline constexpr int kCustomer = 7824;
inline constexpr int kDescription = 7825;
inline constexpr int kDetails = 7826;
inline constexpr int kFile = 7827;
inline constexpr int kSize = 7828;
inline constexpr int kMpCount = 7829;
inline constexpr int kRange = 7830;        // "MP %1 - %2"
inline constexpr int kRangeLabel = 7821;
inline constexpr int kFirstTime = 7831;
inline constexpr int kLastTime = 7832;
inline constexpr int kPort = 7833;         // "Port %1:"
inline constexpr int kCounters = 7834;
inline constexpr int kLoadPeak = 7835;
inline constexpr int kQuality = 7836;
inline constexpr int kMarks = 7837;
inline constexpr int kNone = 7838;
inline constexpr int kBody = 7839;
inline constexpr int kSummary = 7840;
inline constexpr int kCharacters = 7841;
inline constexpr int kErrors = 7842;
inline constexpr int kSignalChanges = 7843;
inline constexpr int kBusiestSecond = 7844;
inline constexpr int kCharacterCount = 7845; // "%1 characters"
inline constexpr int kPageOf = 7846;         // "Page %1 of %2"
inline constexpr int kPrinted = 7847;        // "Printed %1"
inline constexpr int kMoreMarks = 7848;      // "... and %1 more"
inline constexpr int kBytes = 7849;
inline constexpr int kPortSettings = 7881;   // "%1 Bd, %2 data bits, parity %3, %4 stop bits"

// Errors (Result codes).
inline constexpr int kNotPdf = 7850;
inline constexpr int kOntoRecording = 7851;
inline constexpr int kCannotWrite = 7852;
inline constexpr int kRangeOutside = 7853;
inline constexpr int kEnvironmentNotRead = 7854;
inline constexpr int kNoMps = 7855;
inline constexpr int kPreviewTruncated = 7856; // "The preview shows the first %1 of %2 pages."
inline constexpr int kStopped = 7857;
inline constexpr int kPageTooSmall = 7858;
inline constexpr int kCannotRead = 7859;

} // namespace kestrel::report::txt
