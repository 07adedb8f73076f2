#pragma once
// The one result type of the core: a code and a detail. Code 0 is success;
// any other code is the number of the message text that says what went wrong
// (the string table's German number, e.g. 3001 "cannot open the record file"),
// and the detail is what the user needs beside it: the system's reason, a path,
// the line of a file. Core code returns it; the window and kestrel-cli decide
// how to show it. Header only, so that standard-library-only code can use it.

#include <string>
#include <utility>

namespace kestrel {

struct [[nodiscard]] Result {
    int code = 0;
    std::string detail;

    [[nodiscard]] bool ok() const { return code == 0; }
    explicit operator bool() const { return ok(); }

    [[nodiscard]] static Result Ok() { return {}; }
    [[nodiscard]] static Result Fail(int code, std::string detail = {}) { return {code, std::move(detail)}; }
    friend bool operator==(const Result &, const Result &) = default;
};

// A value or the reason there is none.
template <class T>
struct [[nodiscard]] Expected {
    T value{};
    Result result;
    [[nodiscard]] bool ok() const { return result.ok(); }
    explicit operator bool() const { return ok(); }
};

} // namespace kestrel
