#pragma once
// Small sound files made by the tests themselves: a silent 16-bit mono PCM WAV file, and one
// whose header promises a WAV file but whose chunks are rubbish.

#include <cstdint>
#include <fstream>
#include <string>

namespace kestrel::test {

inline void putLe(std::string &out, std::uint32_t value, int bytes)
{
    for (int i = 0; i < bytes; ++i)
        out += static_cast<char>((value >> (8 * i)) & 0xFF);
}

// seconds of silence at the given sample rate.
inline std::string SilentWav(double seconds, std::uint32_t sampleRate)
{
    const auto samples = static_cast<std::uint32_t>(seconds * sampleRate);
    const std::uint32_t dataBytes = samples * 2;
    std::string w = "RIFF";
    putLe(w, 36 + dataBytes, 4);
    w += "WAVEfmt ";
    putLe(w, 16, 4);             // size of the format chunk
    putLe(w, 1, 2);              // PCM
    putLe(w, 1, 2);              // mono
    putLe(w, sampleRate, 4);
    putLe(w, sampleRate * 2, 4); // bytes per second
    putLe(w, 2, 2);              // bytes per frame
    putLe(w, 16, 2);             // bits per sample
    w += "data";
    putLe(w, dataBytes, 4);
    w.append(dataBytes, '\0');
    return w;
}

inline std::string BrokenWav()
{
    std::string w = "RIFF";
    putLe(w, 200, 4);
    w += "WAVE";
    for (int i = 0; i < 24; ++i)
        w += "garbage!";
    return w;
}

inline void WriteFile(const std::string &path, const std::string &bytes)
{
    std::ofstream(path, std::ios::binary) << bytes;
}

} // namespace kestrel::test
