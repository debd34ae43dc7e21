#include "app/HelpBrowser.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <QTextStream>

namespace waxline::app {

namespace {

bool listsHtml(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return false;
    QTextStream in(&file);
    bool listed = false;
    QString section;
    while (!in.atEnd()) {
        const QString line = in.readLine().trimmed();
        if (line.startsWith(QLatin1Char('['))) {
            section = line;
            continue;
        }
        if (!line.startsWith(QLatin1String("text/html=")))
            continue;
        const QString handlers = line.mid(10).trimmed();
        if (section == QLatin1String("[Removed Associations]"))
            listed = false;
        else if (!handlers.isEmpty() && handlers != QLatin1String(";"))
            listed = true;
    }
    return listed;
}

QStringList split(const QByteArray& value, const char* fallback) {
    const QString text = QString::fromLocal8Bit(value.isEmpty() ? QByteArray(fallback) : value);
    return text.split(QLatin1Char(':'), Qt::SkipEmptyParts);
}

} // namespace

bool htmlHandlerListed(const QStringList& folders) {
    for (const QString& folder : folders) {
        const QDir dir(folder);
        for (const char* name : {"mimeapps.list", "defaults.list", "mimeinfo.cache"})
            if (listsHtml(dir.filePath(QLatin1String(name))))
                return true;
    }
    return false;
}

QStringList mimeFolders() {
    const QString home = QDir::homePath();
    QStringList folders;
    folders << split(qgetenv("XDG_CONFIG_HOME"), "").value(0, home + QStringLiteral("/.config"));
    folders << split(qgetenv("XDG_CONFIG_DIRS"), "/etc/xdg");
    const QString dataHome =
        split(qgetenv("XDG_DATA_HOME"), "").value(0, home + QStringLiteral("/.local/share"));
    folders << dataHome + QStringLiteral("/applications");
    for (const QString& data : split(qgetenv("XDG_DATA_DIRS"), "/usr/local/share:/usr/share"))
        folders << data + QStringLiteral("/applications");
    return folders;
}

bool browserExpected() {
    if (!qEnvironmentVariableIsEmpty("BROWSER"))
        return true;
    return !QStandardPaths::findExecutable(QStringLiteral("xdg-open")).isEmpty() &&
           htmlHandlerListed(mimeFolders());
}

} // namespace waxline::app
