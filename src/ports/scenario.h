#pragma once
// A scenario drives the simulated line: what arrives on port A (D2 and the
// M lines) and port B (D1 and the S lines), and when. The text format is
// line-oriented; docs/scenario-format.md describes it.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kestrel {

inline constexpr int kSimPortA = 0;
inline constexpr int kSimPortB = 1;

struct ScenarioStep {
    enum class Kind {
        Bytes,      // bytes on a port's data circuit
        ModemSet,   // modem state := value
        ModemOn,    // state |= value
        ModemOff,   // state &= ~value
        LineError,  // line-error word
        Lost,       // the port's device goes away
        Wait,       // the cursor moves on by a duration
        At,         // the cursor moves to a time after the start of the pass (never back)
    };
    Kind kind = Kind::Bytes;
    int port = kSimPortA;
    std::vector<std::uint8_t> bytes;
    unsigned value = 0;
    std::int64_t nanoseconds = 0;
    bool withPrevious = false; // starts in the same instant as the step before
    int line = 0;              // source line, for messages
};

struct Scenario {
    std::vector<ScenarioStep> steps;
    int loops = 1;         // passes; 0 = forever
    int chunk = 1;         // bytes handed over at once, as a UART FIFO or USB adapter would
    long baud = 0;         // pacing; 0 = port A's baud rate
    bool paced = true;     // false: as fast as the consumer takes them
};

struct ScenarioError {
    int line = 0;
    std::string reason;
    // "line 3: ..." for a parse error; the reason alone when the file could not be read (line 0).
    [[nodiscard]] std::string text() const { return line > 0 ? "line " + std::to_string(line) + ": " + reason : reason; }
};

[[nodiscard]] std::optional<Scenario> ParseScenario(std::string_view text, ScenarioError &error);

// The largest scenario file read (a scenario is text a person writes).
inline constexpr std::uint64_t kMaxScenarioBytes = 4u << 20;

// Reads and parses a scenario file; a read failure, a file that is not a regular
// one and one over kMaxScenarioBytes come back as line 0.
[[nodiscard]] std::optional<Scenario> LoadScenarioFile(const std::string &path, ScenarioError &error);

// An empty name gives the built-in demo; anything else is a scenario file.
[[nodiscard]] std::optional<Scenario> LoadScenario(const std::string &fileOrEmpty, ScenarioError &error);

// The built-in demo: a terminal and a modem talking both ways, with handshakes and a ring.
[[nodiscard]] std::string_view DemoScenarioText();

// Byte string syntax shared with the data lines of the format: hex bytes, quoted text with
// escapes, <NAME> control characters. Empty optional with a reason on error.
[[nodiscard]] std::optional<std::vector<std::uint8_t>> ParseByteItems(std::string_view text, std::string &reason);

// "10ms", "250us", "2s", "1.5ms" -> nanoseconds.
[[nodiscard]] std::optional<std::int64_t> ParseDuration(std::string_view text);

} // namespace kestrel
