#pragma once
// Numbers of the texts of the problem report and the update check in the
// string table (German number; the language offset is added on look-up).

namespace kestrel::support_txt {

// The problem report window.
inline constexpr int kReportTitle = 9301;
inline constexpr int kReportIntro = 9302;
inline constexpr int kSendMail = 9303;
inline constexpr int kCopy = 9304;
inline constexpr int kSave = 9305;
inline constexpr int kClose = 9306;
inline constexpr int kNoMailHandler = 9307; // %1 the recipient
inline constexpr int kCopied = 9308;
inline constexpr int kSaved = 9309;          // %1 the file
inline constexpr int kTextFilter = 9310;
inline constexpr int kReplaceFile = 9311;    // %1 the file
inline constexpr int kFileNotWritten = 9312; // followed by the reason
inline constexpr int kMailOpened = 9337;
inline constexpr int kRecipient = 9338;      // %1 the recipient
inline constexpr int kBadRecipient = 9339;   // followed by the address

// The report's text.
inline constexpr int kReportHeading = 9313; // also the mail's subject
inline constexpr int kVersion = 9314;
inline constexpr int kBuilt = 9315;
inline constexpr int kQt = 9316;
inline constexpr int kSystem = 9317;
inline constexpr int kPorts = 9318;
inline constexpr int kLastErrors = 9319;
inline constexpr int kNone = 9320;
inline constexpr int kDescribe = 9321;

// The update check.
inline constexpr int kUpdateTitle = 9322;
inline constexpr int kNewer = 9323;         // %1 new version, %2 running version, %3 address
inline constexpr int kUpToDate = 9324;      // %1 running version
inline constexpr int kBadFile = 9325;       // followed by the reason
inline constexpr int kNoAnswer = 9326;      // followed by the reason
inline constexpr int kBadAddress = 9327;    // followed by the address
inline constexpr int kStatusNewer = 9328;   // %1 version, %2 address
inline constexpr int kStatusFailed = 9329;  // %1 the reason
inline constexpr int kTimedOut = 9330;      // %1 seconds
inline constexpr int kHttpStatus = 9331;    // %1 the status code
inline constexpr int kNotes = 9332;
inline constexpr int kNoVersionLine = 9333;
inline constexpr int kNotAVersion = 9334;   // %1 the text
inline constexpr int kTooLarge = 9335;
inline constexpr int kNoDownloadAddress = 9336;

} // namespace kestrel::support_txt
