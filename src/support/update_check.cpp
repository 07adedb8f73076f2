#include "support/update_check.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QTimer>
#include <QUrl>

#include "base/string_table.h"
#include "support/support_log.h"
#include "support/support_texts.h"

namespace kestrel {

namespace {

// Only a web address: a file: or ftp: address in the settings is a mistake, not a source.
bool UsableAddress(const QUrl &url)
{
    return url.isValid() && !url.host().isEmpty() && (url.scheme() == "http" || url.scheme() == "https");
}

std::string Reason(const QNetworkReply &reply)
{
    const QVariant status = reply.attribute(QNetworkRequest::HttpStatusCodeAttribute);
    if (status.isValid() && status.toInt() >= 300)
        return StrArg(support_txt::kHttpStatus, std::to_string(status.toInt()));
    return reply.errorString().toStdString();
}

std::string Replace(std::string text, std::string_view placeholder, std::string_view value)
{
    if (const auto at = text.find(placeholder); at != std::string::npos)
        text.replace(at, placeholder.size(), value);
    return text;
}

} // namespace

std::string UpdateMessageText(const UpdateCheckResult &r)
{
    switch (r.outcome) {
    case UpdateOutcome::Newer: {
        std::string text = Replace(Replace(Replace(Str(support_txt::kNewer), "%1", r.file.version.text()), "%2",
                                           r.running.text()),
                                   "%3", r.file.url);
        if (!r.file.notes.empty())
            text += "\n\n" + Str(support_txt::kNotes) + r.file.notes;
        return text;
    }
    case UpdateOutcome::UpToDate:
        return StrArg(support_txt::kUpToDate, r.running.text());
    case UpdateOutcome::BadFile:
    case UpdateOutcome::Failed:
        break;
    }
    return Str(r.problem.code) + r.problem.detail;
}

std::string UpdateStatusLine(const UpdateCheckResult &r)
{
    switch (r.outcome) {
    case UpdateOutcome::Newer:
        return Replace(StrArg(support_txt::kStatusNewer, r.file.version.text()), "%2", r.file.url);
    case UpdateOutcome::UpToDate:
        return {};
    case UpdateOutcome::BadFile:
    case UpdateOutcome::Failed:
        break;
    }
    return StrArg(support_txt::kStatusFailed, r.problem.detail);
}

UpdateCheck::UpdateCheck(QObject *parent)
    : QObject(parent), network_(new QNetworkAccessManager(this)), timer_(new QTimer(this))
{
    timer_->setSingleShot(true);
    timer_->setTimerType(Qt::PreciseTimer); // a coarse timer may end the wait 5 % early or late
    connect(timer_, &QTimer::timeout, this, &UpdateCheck::timedOut);
}

UpdateCheck::~UpdateCheck() { abandon(); }

void UpdateCheck::abandon()
{
    timer_->stop();
    if (reply_ != nullptr) {
        QNetworkReply *reply = reply_;
        reply_ = nullptr;
        reply->disconnect(this);
        reply->abort();
        reply->deleteLater();
    }
}

void UpdateCheck::start(const std::string &versionFileUrl, const VersionNumber &running)
{
    abandon();
    ++generation_;
    running_ = running;
    timedOut_ = false;
    tooLarge_ = false;
    const QUrl url(QString::fromStdString(versionFileUrl), QUrl::StrictMode);
    if (!UsableAddress(url)) {
        UpdateCheckResult r;
        r.running = running;
        r.problem = Result::Fail(support_txt::kBadAddress, versionFileUrl);
        // Said through the event loop like every other answer, never from inside start().
        QTimer::singleShot(0, this, [this, r, generation = generation_] {
            if (generation == generation_)
                finish(r);
        });
        return;
    }
    QNetworkRequest request(url);
    request.setTransferTimeout(static_cast<int>(timeout_.count()));
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::NoLessSafeRedirectPolicy);
    request.setMaximumRedirectsAllowed(5);
    request.setHeader(QNetworkRequest::UserAgentHeader, QStringLiteral("Kestrel-update-check"));
    qCInfo(lcSupport) << "update check asks" << url.toString();
    reply_ = network_->get(request);
    connect(reply_, &QNetworkReply::finished, this, &UpdateCheck::replyFinished);
    // A server that sends a version file without end (or far too much) is cut off early.
    connect(reply_, &QNetworkReply::downloadProgress, this, [this](qint64 received, qint64) {
        if (received > static_cast<qint64>(kMaxVersionFileSize) && reply_ != nullptr) {
            tooLarge_ = true;
            reply_->abort();
        }
    });
    timer_->start(timeout_);
}

void UpdateCheck::timedOut()
{
    if (reply_ == nullptr)
        return;
    timedOut_ = true;
    reply_->abort(); // finished() follows, and says it timed out
}

void UpdateCheck::replyFinished()
{
    QNetworkReply *reply = reply_;
    if (reply == nullptr)
        return;
    reply_ = nullptr;
    timer_->stop();
    reply->deleteLater();

    UpdateCheckResult r;
    r.running = running_;
    const QByteArray body = reply->error() == QNetworkReply::NoError ? reply->readAll() : QByteArray();
    const QVariant status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
    if (tooLarge_) {
        r.outcome = UpdateOutcome::BadFile;
        r.problem = Result::Fail(support_txt::kBadFile, Str(support_txt::kTooLarge));
    } else if (timedOut_ || reply->error() == QNetworkReply::OperationCanceledError ||
               reply->error() == QNetworkReply::TimeoutError) {
        r.problem = Result::Fail(support_txt::kNoAnswer,
                                 StrArg(support_txt::kTimedOut, std::to_string((timeout_.count() + 999) / 1000)));
    } else if (reply->error() != QNetworkReply::NoError || (status.isValid() && status.toInt() >= 300)) {
        r.problem = Result::Fail(support_txt::kNoAnswer, Reason(*reply));
    } else {
        Expected<VersionFile> file = ParseVersionFile(std::string_view(body.constData(), static_cast<std::size_t>(body.size())));
        if (!file) {
            r.outcome = UpdateOutcome::BadFile;
            r.problem = file.result;
        } else {
            r.file = std::move(file.value);
            r.outcome = CompareVersions(r.file.version, running_) > 0 ? UpdateOutcome::Newer : UpdateOutcome::UpToDate;
        }
    }
    finish(std::move(r));
}

void UpdateCheck::finish(UpdateCheckResult result)
{
    qCInfo(lcSupport) << "update check ended:" << static_cast<int>(result.outcome)
                      << QString::fromStdString(result.problem.detail);
    emit finished(result);
}

} // namespace kestrel
