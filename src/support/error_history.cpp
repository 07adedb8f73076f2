#include "support/error_history.h"

#include <QDateTime>

namespace kestrel {

void ErrorHistory::add(ShownError error)
{
    entries_.push_back(std::move(error));
    while (entries_.size() > capacity_)
        entries_.pop_front();
}

int RememberingPrompter::ShowMessage(const std::string &title, const std::string &text, int buttons, int icon)
{
    if (icon == Icon::Error || icon == Icon::Warning)
        history_.add({QDateTime::currentDateTime().toString(Qt::ISODate).toStdString(), title, text});
    return shown_->ShowMessage(title, text, buttons, icon);
}

} // namespace kestrel
