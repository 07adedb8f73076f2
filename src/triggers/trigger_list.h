#pragma once
// The ordered trigger list. Order matters: evaluation works through the active
// triggers in list order. Every change leaves the numbers at 1..n.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "triggers/trigger_def.h"

namespace kestrel {

class TriggerList {
public:
    [[nodiscard]] std::size_t size() const { return items_.size(); }
    [[nodiscard]] bool empty() const { return items_.empty(); }
    [[nodiscard]] const TriggerDef &operator[](std::size_t i) const { return items_[i]; }
    [[nodiscard]] TriggerDef &operator[](std::size_t i) { return items_[i]; }
    [[nodiscard]] const std::vector<TriggerDef> &items() const { return items_; }
    [[nodiscard]] auto begin() const { return items_.begin(); }
    [[nodiscard]] auto end() const { return items_.end(); }

    // Inserts before the selected row, or appends when nothing (or a row past the end) is selected.
    // Returns the new trigger's index.
    std::size_t Insert(TriggerDef trigger, std::optional<std::size_t> selected = std::nullopt);
    std::size_t Append(TriggerDef trigger) { return Insert(std::move(trigger)); }
    // Replaces the record at index (an edit confirmed in the editor).
    bool Replace(std::size_t index, TriggerDef trigger);
    bool Remove(std::size_t index);
    // Swap with the neighbour; the first cannot move up, the last not down.
    // Returns the trigger's new index (unchanged when it could not move or index is out of range).
    std::size_t MoveUp(std::size_t index);
    std::size_t MoveDown(std::size_t index);
    void Clear() { items_.clear(); }

    void EnableAll();
    void DisableAll();
    void ReverseAll();
    void SetActive(std::size_t index, bool active);

    // Every record's number becomes its 1-based position.
    void TrigListRefreshNumbers();

    // Indexes of the triggers that would play a sound or start a program when armed.
    [[nodiscard]] std::vector<std::size_t> TriggersWithExternalActions() const;
    [[nodiscard]] std::size_t ActiveCount() const;

    friend bool operator==(const TriggerList &, const TriggerList &) = default;

private:
    // Numbers of the items from first up to (not including) end: their index + 1.
    void renumberFrom(std::size_t first, std::size_t end = SIZE_MAX);

    std::vector<TriggerDef> items_;
};

} // namespace kestrel
