#pragma once
// The value-list editor behind TFormSelector: two lists, the values that may be
// chosen ("available") and the ones the port settings offer ("selected"). Values
// move between them one at a time; a typed value joins the available list once
// a port could use it. Both lists stay in numeric order, so the port boxes offer
// 300 before 1200 however the values were moved.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kestrel {

// The four value lists of the port settings (Kestrel.ini [Port Standards], a profile's [Interface]).
enum class PortValueKind { BaudRates, DataBits, Parities, StopBits };

[[nodiscard]] const std::vector<std::string> &StandardValuesOf(PortValueKind kind);

// The text as the lists keep it when a port can use it: a baud rate or data-bit count
// as a plain number ("09600" -> "9600"), a parity letter in capitals, a stop-bit count
// as "1", "1.5" or "2" (a decimal comma is taken too). Nothing for anything else.
[[nodiscard]] std::optional<std::string> OfferableValue(PortValueKind kind, std::string_view text);

class ValueSelector {
public:
    // Selected: the current list as it stands, duplicates dropped. Available: the
    // standard values of the kind that are not selected.
    ValueSelector(PortValueKind kind, const std::vector<std::string> &current);

    [[nodiscard]] PortValueKind kind() const { return kind_; }
    [[nodiscard]] const std::vector<std::string> &available() const { return available_; }
    [[nodiscard]] const std::vector<std::string> &selected() const { return selected_; }

    enum class AddOutcome { Added, AlreadyListed, Invalid };
    // "+": a typed value into the available list.
    AddOutcome AddValue(std::string_view typed);
    // "-": drops an available value; false when there is no such value.
    bool DeleteAvailable(std::string_view value);
    // ">" and "<": one value from one list into the other; false when it is not in the first.
    bool ToSelected(std::string_view value);
    bool ToAvailable(std::string_view value);
    // "RES": the available list is the standard list again, less what is selected.
    void ResetAvailable();

private:
    PortValueKind kind_;
    std::vector<std::string> available_;
    std::vector<std::string> selected_;
};

// Puts value into list at its numeric place (texts that are no number go last, in
// the order they came). The lists of the selector are kept this way.
void InsertInValueOrder(std::vector<std::string> &list, const std::string &value);

} // namespace kestrel
