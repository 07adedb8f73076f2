#include "triggers/trigger_list.h"

#include <algorithm>
#include <utility>

namespace kestrel {

std::size_t TriggerList::Insert(TriggerDef trigger, std::optional<std::size_t> selected)
{
    std::size_t at = items_.size();
    if (selected && *selected < items_.size())
        at = *selected;
    trigger.portHandle = 0;
    items_.insert(items_.begin() + static_cast<std::ptrdiff_t>(at), std::move(trigger));
    renumberFrom(at); // appending renumbers one: loading a long list stays linear
    return at;
}

bool TriggerList::Replace(std::size_t index, TriggerDef trigger)
{
    if (index >= items_.size())
        return false;
    items_[index] = std::move(trigger);
    renumberFrom(index, index + 1);
    return true;
}

bool TriggerList::Remove(std::size_t index)
{
    if (index >= items_.size())
        return false;
    items_.erase(items_.begin() + static_cast<std::ptrdiff_t>(index));
    renumberFrom(index);
    return true;
}

std::size_t TriggerList::MoveUp(std::size_t index)
{
    if (index == 0 || index >= items_.size())
        return index;
    std::swap(items_[index], items_[index - 1]);
    renumberFrom(index - 1, index + 1);
    return index - 1;
}

std::size_t TriggerList::MoveDown(std::size_t index)
{
    if (index + 1 >= items_.size())
        return index;
    std::swap(items_[index], items_[index + 1]);
    renumberFrom(index, index + 2);
    return index + 1;
}

void TriggerList::EnableAll()
{
    for (auto &t : items_)
        t.Active = true;
}

void TriggerList::DisableAll()
{
    for (auto &t : items_)
        t.Active = false;
}

void TriggerList::ReverseAll()
{
    for (auto &t : items_)
        t.Active = !t.Active;
}

void TriggerList::SetActive(std::size_t index, bool active)
{
    if (index < items_.size())
        items_[index].Active = active;
}

void TriggerList::TrigListRefreshNumbers() { renumberFrom(0); }

void TriggerList::renumberFrom(std::size_t first, std::size_t end)
{
    end = std::min(end, items_.size());
    for (std::size_t i = first; i < end; ++i)
        items_[i].number = static_cast<std::int32_t>(i + 1);
}

std::vector<std::size_t> TriggerList::TriggersWithExternalActions() const
{
    std::vector<std::size_t> out;
    for (std::size_t i = 0; i < items_.size(); ++i) {
        if (items_[i].HasExternalAction())
            out.push_back(i);
    }
    return out;
}

std::size_t TriggerList::ActiveCount() const
{
    return static_cast<std::size_t>(std::count_if(items_.begin(), items_.end(), [](const TriggerDef &t) { return t.Active; }));
}

} // namespace kestrel
