#pragma once
// Asks the version file at a configured address whether a newer Kestrel
// exists. Asynchronous: start() returns at once and finished() comes later
// through the event loop, which never waits for the network. Nothing but the
// small version file is ever fetched, and nothing is installed.

#include <QObject>
#include <QNetworkReply>
#include <QPointer>
#include <chrono>
#include <string>

#include "base/result.h"
#include "support/version_file.h"

class QNetworkAccessManager;

class QTimer;

namespace kestrel {

enum class UpdateOutcome {
    Newer,    // file.version is above the running one
    UpToDate, // the same or older
    BadFile,  // an answer that is no usable version file
    Failed,   // a malformed address, no answer, an HTTP error
};

struct UpdateCheckResult {
    UpdateOutcome outcome = UpdateOutcome::Failed;
    VersionFile file;        // Newer and UpToDate
    VersionNumber running;   // what was compared with
    Result problem;          // BadFile and Failed: message number and detail
};

// The text the Help menu's message box shows, and the one quiet status-bar line of the
// check at start-up (empty when there is nothing to say: up to date).
[[nodiscard]] std::string UpdateMessageText(const UpdateCheckResult &r);
[[nodiscard]] std::string UpdateStatusLine(const UpdateCheckResult &r);

class UpdateCheck final : public QObject {
    Q_OBJECT
public:
    static constexpr std::chrono::milliseconds kDefaultTimeout{5000};

    explicit UpdateCheck(QObject *parent = nullptr);
    ~UpdateCheck() override;

    // The whole check, from asking to the last byte, ends within this time.
    void setTimeout(std::chrono::milliseconds t) { timeout_ = t; }
    // Starts a check of the file at versionFileUrl against the running version; a check
    // still running is abandoned (its finished() never comes).
    void start(const std::string &versionFileUrl, const VersionNumber &running);
    [[nodiscard]] bool running() const { return reply_ != nullptr; }

signals:
    void finished(const kestrel::UpdateCheckResult &result);

private:
    void replyFinished();
    void timedOut();
    void finish(UpdateCheckResult result);
    void abandon();

    QNetworkAccessManager *network_ = nullptr;
    QPointer<QNetworkReply> reply_;
    QTimer *timer_ = nullptr;
    std::chrono::milliseconds timeout_ = kDefaultTimeout;
    VersionNumber running_;
    bool timedOut_ = false;
    bool tooLarge_ = false;
    int generation_ = 0; // a later start() makes an earlier answer stale
};

} // namespace kestrel
