#pragma once
// An environment (.kef): one measurement set-up with both ports' settings, the
// record file, a descriptive header and the whole trigger list.

#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "base/result.h"
#include "config/ini_file.h"
#include "config/settings_table.h"
#include "triggers/trigger_list.h"

namespace kestrel {

inline constexpr const char *kDefaultEnvironmentName = "Default.kef";
inline constexpr const char *kDefaultRecordFileName = "Default.ksr";
inline constexpr const char *kRecordingsFolder = "recordings";
// Device-path key beside the integer Device key; it wins when present and not empty.
inline constexpr const char *kDevicePathKey = "DevicePath";

// Parity ordinals as the port layer numbers them.
namespace ParityOrdinal {
inline constexpr int None = 0;
inline constexpr int Odd = 1;
inline constexpr int Even = 2;
inline constexpr int Mark = 3;
inline constexpr int Space = 4;
} // namespace ParityOrdinal

// Values start at zero; Environment's constructor gives them the file's defaults.
struct EnvPort {
    int Device = 0;          // port number (COM n)
    std::string DevicePath;  // e.g. /dev/ttyUSB0 or a /dev/serial/by-id name; empty: use Device
    int CustomBaudRate = 0;
    int DataBits = 0;
    int Parity = ParityOrdinal::None;
    int StopBits = 0;
    friend bool operator==(const EnvPort &, const EnvPort &) = default;
};

struct EnvGeneral {
    std::string Title, Author, Company, Address1, Address2, City, ZIP, State, Country, Phone, Fax, Internet, Email;
    friend bool operator==(const EnvGeneral &, const EnvGeneral &) = default;
};

struct EnvCustomer {
    std::string Company, Contact, Address1, Address2, City, ZIP, State, Country, Phone, Fax, Internet, Email;
    friend bool operator==(const EnvCustomer &, const EnvCustomer &) = default;
};

// Header keys in the order of writing (the environment's settings table takes them from here).
inline constexpr MemberKey<EnvGeneral, std::string> kGeneralKeys[] = {
    {"Title", &EnvGeneral::Title},       {"Author", &EnvGeneral::Author},     {"Company", &EnvGeneral::Company},
    {"Address1", &EnvGeneral::Address1}, {"Address2", &EnvGeneral::Address2}, {"City", &EnvGeneral::City},
    {"ZIP", &EnvGeneral::ZIP},           {"State", &EnvGeneral::State},       {"Country", &EnvGeneral::Country},
    {"Phone", &EnvGeneral::Phone},       {"Fax", &EnvGeneral::Fax},           {"Internet", &EnvGeneral::Internet},
    {"Email", &EnvGeneral::Email},
};
inline constexpr MemberKey<EnvCustomer, std::string> kCustomerKeys[] = {
    {"Company", &EnvCustomer::Company},   {"Contact", &EnvCustomer::Contact}, {"Address1", &EnvCustomer::Address1},
    {"Address2", &EnvCustomer::Address2}, {"City", &EnvCustomer::City},       {"ZIP", &EnvCustomer::ZIP},
    {"State", &EnvCustomer::State},       {"Country", &EnvCustomer::Country}, {"Phone", &EnvCustomer::Phone},
    {"Fax", &EnvCustomer::Fax},           {"Internet", &EnvCustomer::Internet}, {"Email", &EnvCustomer::Email},
};

struct Environment {
    Environment(); // every setting at the default the file gives a missing key (no record file yet)

    EnvPort comA;
    EnvPort comB;
    std::string recordFile;
    EnvGeneral general;
    EnvCustomer customer;
    std::vector<std::string> description; // memo lines
    TriggerList triggers;
    friend bool operator==(const Environment &, const Environment &) = default;
};

// What loading needs from the running program.
struct EnvLoadContext {
    std::filesystem::path dataFolder;              // for the default record file
    std::optional<std::string> commandLineRecord;  // a record file named on the command line wins
    double now = 0.0;                              // TimeReached of a trigger that has none
};

struct EnvLoadResult {
    Environment env;
    bool existed = false;
    Result status; // a file that exists but cannot be read: kMsgEnvironmentNotRead and the reason
    // Triggers (indexes) that would play a sound or start a program once armed.
    // Loading runs nothing; the window asks the user before arming these.
    std::vector<std::size_t> triggersWithExternalActions;
};

// data folder + recordings/Default.ksr
[[nodiscard]] std::string DefaultRecordFile(const std::filesystem::path &dataFolder);
// The record file in use: one named on the command line wins over the environment's.
[[nodiscard]] std::string EffectiveRecordFile(const std::string &fromEnvironment,
                                              const std::optional<std::string> &commandLineRecord);

[[nodiscard]] EnvLoadResult LoadEnvironment(const IniFile &ini, const EnvLoadContext &ctx);
[[nodiscard]] EnvLoadResult LoadEnvironment(const std::filesystem::path &file, const EnvLoadContext &ctx);

// Writes the environment onto ini: ports, record file, header, the description
// (its section erased first) and the triggers, then erases the stale Trigger
// sections of a longer older list up to the first missing number.
void StoreEnvironment(const Environment &env, IniFile &ini);
// Reads the file as it stands, stores over it and replaces it atomically.
// A failure is kMsgEnvironmentNotSaved with the reason.
[[nodiscard]] Result SaveEnvironment(const Environment &env, const std::filesystem::path &file);

// The keys of the file in the order of writing, and those of one trigger section
// (whose name the caller gives); see settings_table.h.
[[nodiscard]] std::span<const Setting<Environment>> EnvironmentSettings();
[[nodiscard]] std::span<const Setting<TriggerDef>> TriggerSettings();

// The program-wide "environment changed" mark that edits set and a save or load clears.
class EnvironmentChangeFlag {
public:
    void SetEnvironmentChanged() { changed_ = true; }
    void SetEnvironmentUnchanged() { changed_ = false; }
    [[nodiscard]] bool IsEnvironmentChanged() const { return changed_; }

private:
    bool changed_ = false;
};

} // namespace kestrel
