#include "alert_window.h"

#include <QCloseEvent>
#include <QFileInfo>
#include <QFontMetrics>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "alert_texts.h"
#include "base/string_table.h"

namespace kestrel::chimer {

namespace {

// Wide enough for a usual file name, small enough to stay out of the way.
constexpr int kTextWidth = 340;

QString text(int number, int lang)
{
    return QString::fromStdString(StrIn(number, lang));
}

} // namespace

AlertWindow::AlertWindow(const QString &filePath, int langOffset, QWidget *parent)
    : QWidget(parent, Qt::Window | Qt::WindowStaysOnTopHint), lang_(langOffset)
{
    setObjectName(QStringLiteral("AlertWindow"));
    setWindowTitle(QStringLiteral("Kestrel alert"));

    // A long name is cut in the middle, where it usually differs least; the tool tip has all of it.
    auto *file = new QLabel(this);
    file->setObjectName(QStringLiteral("lblAlertFile"));
    const QString name = QFileInfo(filePath).fileName();
    file->setToolTip(filePath);
    file->setMinimumWidth(kTextWidth);
    file->setAlignment(Qt::AlignCenter);
    QFont bold = file->font();
    bold.setBold(true);
    file->setFont(bold);
    file->setText(QFontMetrics(bold).elidedText(name, Qt::ElideMiddle, kTextWidth));

    message_ = new QLabel(this);
    message_->setObjectName(QStringLiteral("lblAlertMessage"));
    message_->setWordWrap(true);
    message_->setAlignment(Qt::AlignCenter);
    message_->setTextFormat(Qt::PlainText);
    message_->setFixedWidth(kTextWidth); // a wrapped text needs a set width for its height
    message_->hide();

    auto *stop = new QPushButton(text(AlertText::Stop, lang_), this);
    stop->setObjectName(QStringLiteral("btnAlertStop"));
    stop->setDefault(true);
    stop->setMinimumWidth(100);
    connect(stop, &QPushButton::clicked, this, &AlertWindow::stopRequested);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(file);
    layout->addWidget(message_);
    layout->addWidget(stop, 0, Qt::AlignHCenter);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    stop->setFocus();
}

void AlertWindow::showError(const QString &reason)
{
    message_->setText(text(AlertText::CannotPlay, lang_).arg(reason));
    message_->setStyleSheet(QStringLiteral("color: #b00000;"));
    message_->show();
}

void AlertWindow::showNoSoundOutput()
{
    message_->setText(text(AlertText::NoSoundOutput, lang_));
    message_->setStyleSheet(QString());
    message_->show();
}

void AlertWindow::closeEvent(QCloseEvent *event)
{
    emit stopRequested();
    event->accept();
}

} // namespace kestrel::chimer
