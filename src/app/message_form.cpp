#include "app/message_form.h"

#include <QApplication>
#include <QGuiApplication>
#include <QCloseEvent>
#include <QEventLoop>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QProgressBar>
#include <QPushButton>
#include <QSvgRenderer>

#include "base/string_table.h"

namespace kestrel {

namespace {

// Icon kind (warning, error, information, confirmation) -> image of the list.
constexpr std::array<int, 4> kImageOfIconKind = {2, 3, 0, 1};
constexpr std::array<const char *, 4> kImageFiles = {":/images/information.svg", ":/images/confirmation.svg",
                                                     ":/images/warning.svg", ":/images/error.svg"};
constexpr int kIconSize = 48;

QPixmap renderSvg(const char *path, int size)
{
    QSvgRenderer svg(QString::fromLatin1(path));
    QPixmap pm(size, size);
    pm.fill(Qt::transparent);
    if (svg.isValid()) {
        QPainter p(&pm);
        svg.render(&p);
    }
    return pm;
}

QString qs(const std::string &s) { return QString::fromStdString(s); }

int negativeAnswer(int buttons)
{
    // Closing the box without a button counts as its most cautious answer.
    switch (buttons) {
    case Buttons::YesNoCancel: return MsgResult::Cancel;
    case Buttons::YesNo:
    case Buttons::YesNoDefaultNo: return MsgResult::No;
    default: return ButtonResult(buttons, 2);
    }
}

} // namespace

TMessageForm::TMessageForm(QWidget *parent) : QDialog(parent)
{
    setObjectName("TMessageForm");
    setWindowModality(Qt::ApplicationModal);
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    // Above the dialogs that stay on top (the trigger editor asks its questions through it).
    setWindowFlag(Qt::WindowStaysOnTopHint, true);

    lblMessageTitle = new QLabel(this);
    lblMessageTitle->setObjectName("lblMessageTitle");
    QFont tf = lblMessageTitle->font();
    tf.setBold(true);
    tf.setPointSizeF(tf.pointSizeF() * 1.15);
    lblMessageTitle->setFont(tf);

    lblMessageText = new QLabel(this);
    lblMessageText->setObjectName("lblMessageText");
    lblMessageText->setWordWrap(true);
    lblMessageText->setTextInteractionFlags(Qt::TextSelectableByMouse);
    lblMessageText->setMinimumWidth(360);
    lblMessageText->setAlignment(Qt::AlignLeft | Qt::AlignTop);

    btn2 = new QPushButton(this);
    btn2->setObjectName("btn2");
    btn1 = new QPushButton(this);
    btn1->setObjectName("btn1");
    btn3 = new QPushButton(this);
    btn3->setObjectName("btn3");
    for (QPushButton *b : {btn1, btn2, btn3}) {
        b->setMinimumWidth(88);
        b->setAutoDefault(false);
        connect(b, &QPushButton::clicked, this, &TMessageForm::btnClicked);
    }

    Image1 = new QLabel(this);
    Image1->setObjectName("Image1");
    Image1->setFixedSize(kIconSize, kIconSize);
    Image1->setAlignment(Qt::AlignCenter);

    for (std::size_t i = 0; i < ImageList1.size(); ++i)
        ImageList1[i] = renderSvg(kImageFiles[i], kIconSize);

    ProgressBar1 = new QProgressBar(this);
    ProgressBar1->setObjectName("ProgressBar1");
    ProgressBar1->hide();

    auto *grid = new QGridLayout(this);
    grid->setContentsMargins(16, 14, 16, 12);
    grid->setHorizontalSpacing(14);
    grid->addWidget(Image1, 0, 0, 2, 1, Qt::AlignTop);
    grid->addWidget(lblMessageTitle, 0, 1);
    grid->addWidget(lblMessageText, 1, 1);
    grid->addWidget(ProgressBar1, 2, 1);
    auto *row = new QHBoxLayout;
    row->addStretch(1);
    row->addWidget(btn1);
    row->addWidget(btn2);
    row->addWidget(btn3);
    grid->addLayout(row, 3, 0, 1, 2);
    grid->setColumnStretch(1, 1);
    grid->setRowStretch(1, 1);

    InitialLoads();
}

QPixmap TMessageForm::IconImage(int iconKind)
{
    if (iconKind < 0 || iconKind >= static_cast<int>(kImageOfIconKind.size()))
        return {};
    const int image = kImageOfIconKind[static_cast<std::size_t>(iconKind)];
    return renderSvg(kImageFiles[static_cast<std::size_t>(image)], kIconSize);
}

void TMessageForm::InitialLoads()
{
    // The button texts depend on the set and are put on at each showing; here only
    // the defaults, so a box built before a language switch reads right.
    btn1->setText(qs(Str(6007)));
    btn2->setText(qs(Str(6006)));
    btn3->setText(qs(Str(6008)));
}

int TMessageForm::ShowMessage(const std::string &title, const std::string &text, int buttons, int icon)
{
    // One box at a time: a message raised while this one waits (a port lost behind
    // an open question) gets a box of its own once this one has been answered.
    if (waiting_) {
        QEventLoop queue;
        connect(this, &TMessageForm::answered, &queue, &QEventLoop::quit);
        while (waiting_ && result_ == 0)
            queue.exec();
        TMessageForm next(parentWidget());
        return next.ShowMessage(title, text, buttons, icon);
    }

    Image1->clear();
    if (icon >= 0 && icon < static_cast<int>(kImageOfIconKind.size()))
        Image1->setPixmap(ImageList1[static_cast<std::size_t>(kImageOfIconKind[static_cast<std::size_t>(icon)])]);

    setWindowTitle(qs(title));
    lblMessageTitle->setText(qs(title));
    lblMessageText->setText(qs(text));

    btn1->hide();
    btn2->hide();
    btn3->hide();
    buttons_ = buttons;
    switch (buttons) {
    case Buttons::YesNoCancel:
        btn1->setText(qs(Str(6007)));
        btn2->setText(qs(Str(6008)));
        btn3->setText(qs(Str(6003)));
        btn1->show();
        btn2->show();
        btn3->show();
        btn1->setDefault(true);
        break;
    case Buttons::YesNo:
    case Buttons::YesNoDefaultNo:
        btn1->setText(qs(Str(6007)));
        btn3->setText(qs(Str(6008)));
        btn1->show();
        btn3->show();
        (buttons == Buttons::YesNo ? btn1 : btn3)->setDefault(true);
        break;
    default:
        btn2->setText(qs(Str(6006)));
        btn2->show();
        btn2->setDefault(true);
        break;
    }

    adjustSize();
    result_ = 0;
    waiting_ = true;
    show();
    if (QGuiApplication::platformName() != QLatin1String("offscreen")) {
        raise();
        activateWindow();
    }
    // Wait without sleeping: events (port data, timers, the buttons) keep being handled.
    QEventLoop loop;
    waitLoop_ = &loop;
    while (result_ == 0)
        loop.exec();
    waitLoop_ = nullptr;
    waiting_ = false;
    hide();
    return result_;
}

void TMessageForm::btnClicked()
{
    const QObject *s = sender();
    int index = 0;
    if (s == btn1)
        index = 1;
    else if (s == btn2)
        index = 2;
    else if (s == btn3)
        index = 3;
    result_ = -1;
    const int r = ButtonResult(buttons_, index);
    if (r != MsgResult::None)
        result_ = r;
    hide();
    if (waitLoop_ != nullptr)
        waitLoop_->quit();
    emit answered();
}

void TMessageForm::reject()
{
    if (waiting_)
        result_ = negativeAnswer(buttons_);
    hide();
    if (waitLoop_ != nullptr)
        waitLoop_->quit();
    emit answered();
}

void TMessageForm::closeEvent(QCloseEvent *event)
{
    if (waiting_)
        result_ = negativeAnswer(buttons_);
    event->accept();
    if (waitLoop_ != nullptr)
        waitLoop_->quit();
    emit answered();
}

void TMessageForm::NormalizeTopMosts()
{
    // Windows that stay on top would hide the report; lower them while it is shown.
    loweredTopMosts_.clear();
    for (QWidget *w : QApplication::topLevelWidgets()) {
        // A modal dialog waiting for its answer would be closed by hiding it; the box is above it anyway.
        if (w != this && w->isVisible() && !w->isModal() && (w->windowFlags() & Qt::WindowStaysOnTopHint)) {
            w->setWindowFlag(Qt::WindowStaysOnTopHint, false);
            w->show();
            loweredTopMosts_.append(w);
        }
    }
}

void TMessageForm::RestoreTopMosts()
{
    for (QWidget *w : loweredTopMosts_) {
        w->setWindowFlag(Qt::WindowStaysOnTopHint, true);
        w->show();
    }
    loweredTopMosts_.clear();
}

} // namespace kestrel
