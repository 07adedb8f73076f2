#pragma once
// One trigger: the condition it watches, the lines and data it looks at, and
// the actions it takes when it fires. Member names are the keys under which an
// environment file stores them.

#include <cstdint>
#include <string>

namespace kestrel {

// Condition ("Bedingung").
namespace TriggerType {
inline constexpr std::int32_t StartRecording = 0;
inline constexpr std::int32_t StopRecording = 1;
inline constexpr std::int32_t Inactivity = 2;
} // namespace TriggerType

// Event ("Ereignis"); Inactivity goes with TriggerType::Inactivity only.
namespace TriggerEvent {
inline constexpr std::int32_t Data = 0;
inline constexpr std::int32_t Signal = 1;
inline constexpr std::int32_t Error = 2;
inline constexpr std::int32_t TimeReached = 3;
inline constexpr std::int32_t Inactivity = 4;
} // namespace TriggerEvent

// Edge wanted on a status line.
namespace SignalEdge {
inline constexpr std::int32_t Ignore = 0;
inline constexpr std::int32_t Falls = 1; // 1 to 0
inline constexpr std::int32_t Rises = 2; // 0 to 1
} // namespace SignalEdge

inline constexpr std::int32_t kMinInActivitySeconds = 1;
inline constexpr std::int32_t kMaxInActivitySeconds = 65535;

struct TriggerDef {
    std::int32_t number = 0; // 1-based list position, rewritten by every list change

    std::string Name;
    std::string Description;
    bool Active = false;
    std::int32_t Type = TriggerType::StartRecording;
    std::int32_t Event = TriggerEvent::Data;

    bool D1 = false; // pattern watched on D1 (Tx)
    bool D2 = false; // pattern watched on D2 (Rx)
    std::string Data; // upper-case hex digit pairs, "0D0A" for CR LF

    std::int32_t S1 = SignalEdge::Ignore;
    std::int32_t M1 = SignalEdge::Ignore;
    std::int32_t S2 = SignalEdge::Ignore;
    std::int32_t M2 = SignalEdge::Ignore;
    std::int32_t M5 = SignalEdge::Ignore;
    std::int32_t M3 = SignalEdge::Ignore;

    bool PE = false;
    bool FE = false;
    bool LE = false;

    std::int32_t InActivityTime = 1; // seconds
    bool EventD1 = false;
    bool EventD2 = false;
    bool EventS1 = false;
    bool EventM1 = false;
    bool EventS2 = false;
    bool EventM2 = false;
    bool EventM5 = false;
    bool EventM3 = false;
    bool EventPE = false;
    bool EventFE = false;
    bool EventLE = false;

    double TimeReached = 0.0; // days since 1899-12-30, fraction = time of day

    bool PlaySound = false;
    std::string SoundFilePath;
    bool PlaySoundRepeat = false;
    bool ExecCommand = false;
    std::string CommandFilePath;
    std::string CommandParams;

    std::uint16_t portHandle = 0; // run time only: the port trigger armed for it; never saved

    // Firing it would play a sound or start a program.
    [[nodiscard]] bool HasExternalAction() const { return PlaySound || ExecCommand; }

    friend bool operator==(const TriggerDef &, const TriggerDef &) = default;
};

// A key of the environment file bound to the member that holds its value.
template <class Owner, class Value>
struct MemberKey {
    const char *key;
    Value Owner::*field;
};

// Keys of one kind in the order of writing; a member's name is its key.
inline constexpr MemberKey<TriggerDef, std::int32_t> kSignalEdgeKeys[] = {
    {"S1", &TriggerDef::S1}, {"M1", &TriggerDef::M1}, {"S2", &TriggerDef::S2},
    {"M2", &TriggerDef::M2}, {"M5", &TriggerDef::M5}, {"M3", &TriggerDef::M3},
};
inline constexpr MemberKey<TriggerDef, bool> kErrorKeys[] = {
    {"PE", &TriggerDef::PE}, {"FE", &TriggerDef::FE}, {"LE", &TriggerDef::LE}};
// "Event" + the line or error whose absence an inactivity trigger watches.
inline constexpr MemberKey<TriggerDef, bool> kInactivityEventKeys[] = {
    {"EventD1", &TriggerDef::EventD1}, {"EventD2", &TriggerDef::EventD2}, {"EventS1", &TriggerDef::EventS1},
    {"EventM1", &TriggerDef::EventM1}, {"EventS2", &TriggerDef::EventS2}, {"EventM2", &TriggerDef::EventM2},
    {"EventM5", &TriggerDef::EventM5}, {"EventM3", &TriggerDef::EventM3}, {"EventPE", &TriggerDef::EventPE},
    {"EventFE", &TriggerDef::EventFE}, {"EventLE", &TriggerDef::EventLE},
};

// Seconds as the editor leaves them: clamped to 1 ... 65535.
[[nodiscard]] constexpr std::int32_t ClampInActivitySeconds(long long seconds)
{
    if (seconds < kMinInActivitySeconds)
        return kMinInActivitySeconds;
    if (seconds > kMaxInActivitySeconds)
        return kMaxInActivitySeconds;
    return static_cast<std::int32_t>(seconds);
}

} // namespace kestrel
