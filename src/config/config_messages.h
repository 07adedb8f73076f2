#pragma once
// Message numbers (string table) of the results the settings code returns.

namespace kestrel {

inline constexpr int kMsgBadProfileName = 7420;         // profile name with a folder part or empty
inline constexpr int kMsgProfileNotSaved = 7421;        // hardware profile not written
inline constexpr int kMsgEnvironmentNotSaved = 7422;    // environment file not written
inline constexpr int kMsgEnvironmentNotRead = 7423;     // environment file exists but cannot be read
inline constexpr int kMsgSettingsFileNotRead = 7424;    // any settings file that exists but cannot be read
inline constexpr int kMsgSettingsFileNotWritten = 7425; // any settings file not written (or not ours to write)
inline constexpr int kMsgDataFolderNotCreated = 7426;   // data folder or one of its sub-folders
inline constexpr int kMsgConfigNotSaved = 7427;         // Kestrel.ini not written

} // namespace kestrel
