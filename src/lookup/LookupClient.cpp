#include "lookup/LookupClient.h"

#include "lookup/MusicBrainzJson.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QTimer>
#include <QUrlQuery>

#include <cmath>

#ifndef WAXLINE_VERSION
#define WAXLINE_VERSION "0"
#endif
#ifndef WAXLINE_PROJECT_URL
#define WAXLINE_PROJECT_URL ""
#endif

namespace waxline::lookup {

namespace {

constexpr int kMaxRedirects = 3;

QString environment(const char* name, const char* fallback) {
    const QString value = qEnvironmentVariable(name);
    QString url = value.isEmpty() ? QString(fallback) : value;
    while (url.endsWith('/'))
        url.chop(1);
    return url;
}

LookupProblem problemOf(QNetworkReply::NetworkError error) {
    switch (error) {
    case QNetworkReply::OperationCanceledError: // what the transfer time-out aborts with
    case QNetworkReply::TimeoutError:
        return LookupProblem::TimedOut;
    case QNetworkReply::ConnectionRefusedError:
    case QNetworkReply::RemoteHostClosedError:
    case QNetworkReply::HostNotFoundError:
    case QNetworkReply::TemporaryNetworkFailureError:
    case QNetworkReply::NetworkSessionFailedError:
    case QNetworkReply::UnknownNetworkError:
    case QNetworkReply::ProxyConnectionRefusedError:
    case QNetworkReply::ProxyNotFoundError:
    case QNetworkReply::SslHandshakeFailedError:
        return LookupProblem::NoNetwork;
    default:
        return LookupProblem::ServiceError;
    }
}

} // namespace

QString userAgentText() {
    QString agent = QStringLiteral("Waxline/") + WAXLINE_VERSION;
    const QString url = WAXLINE_PROJECT_URL;
    if (!url.isEmpty())
        agent += " ( " + url + " )";
    return agent;
}

ServiceConfig ServiceConfig::fromEnvironment() {
    ServiceConfig c;
    c.musicBrainzUrl = environment("WAXLINE_MUSICBRAINZ_URL", "https://musicbrainz.org");
    c.coverArtUrl = environment("WAXLINE_COVERART_URL", "https://coverartarchive.org");
    c.userAgent = userAgentText();
    return c;
}

LookupClient::LookupClient(ServiceConfig config, RequestPacer::Clock clock, QObject* parent)
    : QObject(parent)
    , config(std::move(config))
    , pacer(std::move(clock))
    , network(new QNetworkAccessManager(this)) {
    // Redirects are followed here, not by Qt: each is then one request, paced and counted.
    network->setRedirectPolicy(QNetworkRequest::ManualRedirectPolicy);
}

LookupClient::~LookupClient() = default;

void LookupClient::search(const QString& query, int limit,
                          std::function<void(Answer<std::vector<ReleaseSummary>>)> done) {
    QUrl url(config.musicBrainzUrl + "/ws/2/release");
    QUrlQuery q;
    q.addQueryItem("query", query);
    q.addQueryItem("limit", QString::number(limit));
    q.addQueryItem("fmt", "json");
    url.setQuery(q);
    enqueue({url, true, config.busyRetries, kMaxRedirects,
             [done](LookupProblem problem, int status, const QByteArray& body) {
                 Answer<std::vector<ReleaseSummary>> answer{problem, status, {}};
                 if (answer.ok()) {
                     auto releases = parseReleaseSearch(body);
                     if (!releases)
                         answer.problem = LookupProblem::BadAnswer;
                     else if (releases->empty())
                         answer.problem = LookupProblem::NoMatch;
                     else
                         answer.value = std::move(*releases);
                 }
                 done(std::move(answer));
             }});
}

void LookupClient::readRelease(const QString& releaseId,
                               std::function<void(Answer<Release>)> done) {
    QUrl url(config.musicBrainzUrl + "/ws/2/release/" +
             QString::fromLatin1(QUrl::toPercentEncoding(releaseId)));
    QUrlQuery q;
    q.addQueryItem("inc", "recordings+artist-credits+labels");
    q.addQueryItem("fmt", "json");
    url.setQuery(q);
    enqueue({url, true, config.busyRetries, kMaxRedirects,
             [done](LookupProblem problem, int status, const QByteArray& body) {
                 Answer<Release> answer{problem, status, {}};
                 if (answer.ok()) {
                     auto release = parseRelease(body);
                     if (!release)
                         answer.problem = LookupProblem::BadAnswer;
                     else
                         answer.value = std::move(*release);
                 }
                 done(std::move(answer));
             }});
}

void LookupClient::fetchFrontCover(const QString& releaseId, int pixels,
                                   std::function<void(Answer<QByteArray>)> done) {
    const QUrl url(config.coverArtUrl + "/release/" +
                   QString::fromLatin1(QUrl::toPercentEncoding(releaseId)) + "/front-" +
                   QString::number(pixels));
    enqueue({url, false, config.busyRetries, kMaxRedirects,
             [done](LookupProblem problem, int status, const QByteArray& body) {
                 Answer<QByteArray> answer{problem, status, body};
                 if (problem == LookupProblem::NoMatch)
                     answer.problem = LookupProblem::NoCover;
                 else if (answer.ok() && body.isEmpty())
                     answer.problem = LookupProblem::BadAnswer;
                 done(std::move(answer));
             }});
}

void LookupClient::enqueue(Pending pending) {
    queue.push_back(std::move(pending));
    pump();
}

void LookupClient::pump() {
    if (busy || waiting || queue.empty())
        return;
    if (queue.front().paced) {
        const double delay = pacer.delayBeforeNext();
        if (delay > 0) {
            waiting = true;
            QTimer::singleShot(static_cast<int>(std::ceil(delay * 1000)), this, [this] {
                waiting = false;
                pump();
            });
            return;
        }
    }
    Pending next = std::move(queue.front());
    queue.pop_front();
    send(std::move(next));
}

void LookupClient::send(Pending pending) {
    QNetworkRequest request(pending.url);
    if (!config.userAgent.isEmpty())
        request.setRawHeader("User-Agent", config.userAgent.toUtf8());
    request.setRawHeader("Accept", "application/json");
    request.setTransferTimeout(config.timeoutMs);
    busy = true;
    ++sent;
    if (pending.paced)
        pacer.sent();
    QNetworkReply* reply = network->get(request);
    connect(reply, &QNetworkReply::finished, this,
            [this, reply, pending = std::move(pending)]() mutable {
                finished(reply, std::move(pending));
            });
}

void LookupClient::finished(QNetworkReply* reply, Pending pending) {
    reply->deleteLater();
    busy = false;
    const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    if (status == 503 && pending.busyLeft > 0) {
        // The service is shedding load: rest as long as it asks, then the same request again.
        pacer.retryAfter(pacer.parseRetryAfter(reply->rawHeader("Retry-After").constData(), 1));
        --pending.busyLeft;
        pending.paced = true;
        queue.push_front(std::move(pending));
        pump();
        return;
    }
    const QUrl location = reply->attribute(QNetworkRequest::RedirectionTargetAttribute).toUrl();
    if (status >= 300 && status < 400 && location.isValid() && pending.redirectsLeft > 0) {
        // The archive answers a cover with a redirect to where the picture is stored.
        pending.url = reply->url().resolved(location);
        --pending.redirectsLeft;
        queue.push_front(std::move(pending));
        pump();
        return;
    }
    LookupProblem problem = LookupProblem::None;
    if (status == 503)
        problem = LookupProblem::Busy;
    else if (status == 404)
        problem = LookupProblem::NoMatch;
    else if (status >= 400)
        problem = LookupProblem::ServiceError;
    else if (reply->error() != QNetworkReply::NoError)
        problem = problemOf(reply->error());
    const QByteArray body = problem == LookupProblem::None ? reply->readAll() : QByteArray();
    // The next request goes first: the callback may end the caller's wait and drop the client.
    pump();
    pending.done(problem, status, body);
}

} // namespace waxline::lookup
