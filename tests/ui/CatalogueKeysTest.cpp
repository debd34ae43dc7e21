#include "ui/Catalogue.h"

#include <QDirIterator>
#include <QFile>
#include <QRegularExpression>
#include <QTranslator>

#include <gtest/gtest.h>

#include <set>

namespace {

// Every "IDS_" key written in the sources, forms and artwork: the lookups happen by run-time
// string, where the Linguist tools cannot see them. Prefixes such as "IDS_BUTTON_" end in "_".
std::set<QString> keysInSources() {
    std::set<QString> keys;
    const QRegularExpression key(QStringLiteral("IDS_[A-Z0-9_]*[A-Z0-9]\\b(?!_)"));
    QDirIterator files(QStringLiteral(WAXLINE_SOURCE_DIR "/src"),
                       {QStringLiteral("*.cpp"), QStringLiteral("*.h"), QStringLiteral("*.ui"),
                        QStringLiteral("*.svg")},
                       QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        QFile file(files.next());
        if (file.fileName().contains(QLatin1String("/translations/")) ||
            !file.open(QIODevice::ReadOnly))
            continue;
        const QString text = QString::fromUtf8(file.readAll());
        auto matches = key.globalMatch(text);
        while (matches.hasNext()) {
            const auto match = matches.next();
            const qsizetype end = match.capturedEnd();
            if (end < text.size() && text.at(end) == QLatin1Char('_'))
                continue;
            keys.insert(match.captured());
        }
    }
    return keys;
}

} // namespace

TEST(CatalogueKeys, EveryKeyInCodeFormsAndArtworkHasAnEnglishAndAGermanText) {
    const std::set<QString> keys = keysInSources();
    // The forms alone use some fifty keys; far fewer means the scan looked in the wrong place.
    ASSERT_GT(keys.size(), 50u);
    EXPECT_TRUE(keys.count(QStringLiteral("IDS_PANEL1_TITLE")));
    EXPECT_TRUE(keys.count(QStringLiteral("IDS_BUTTON_CLOSE")));
    EXPECT_FALSE(keys.count(QStringLiteral("IDS_BUTTON"))) << "a prefix is not a key";
    for (const char* language : {"en", "de"}) {
        QTranslator catalogue;
        ASSERT_TRUE(catalogue.load(QStringLiteral(":/i18n/waxline_%1.qm").arg(language)))
            << language;
        for (const QString& key : keys) {
            const QString text = catalogue.translate("Localizable", key.toUtf8().constData());
            EXPECT_FALSE(text.trimmed().isEmpty()) << language << ": " << qPrintable(key);
            EXPECT_NE(text, key) << language << ": " << qPrintable(key);
        }
    }
}
