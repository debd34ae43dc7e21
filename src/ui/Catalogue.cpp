#include "ui/Catalogue.h"

#include <QCoreApplication>
#include <QTextDocument>
#include <QTranslator>

#include <cmath>

namespace waxline::ui {

QString localizedKey(const QString& key) {
    const QByteArray utf8 = key.toUtf8();
    const QString text = QCoreApplication::translate("Localizable", utf8.constData());
    if (text.isEmpty() || text == key)
        return {};
    return text;
}

QString textOrKey(const char* key) {
    const QString k = QString::fromLatin1(key);
    const QString value = localizedKey(k);
    return value.isNull() ? k : value;
}

QString installCatalogue(const QLocale& locale) {
    static QTranslator* installed = nullptr;
    if (installed) {
        QCoreApplication::removeTranslator(installed);
        delete installed;
        installed = nullptr;
    }
    auto translator = new QTranslator(QCoreApplication::instance());
    QString language = QLocale::languageToCode(locale.language());
    if (!translator->load(QStringLiteral(":/i18n/waxline_%1.qm").arg(language))) {
        language = QStringLiteral("en");
        if (!translator->load(QStringLiteral(":/i18n/waxline_en.qm"))) {
            delete translator;
            return {};
        }
    }
    QCoreApplication::installTranslator(translator);
    installed = translator;
    // Numbers follow the language the window speaks: "+0,0 dB" beside German words.
    QLocale::setDefault(locale);
    return language;
}

QString plainTextOf(const QString& richOrPlain) {
    if (!Qt::mightBeRichText(richOrPlain))
        return richOrPlain;
    QTextDocument document;
    document.setHtml(richOrPlain);
    return document.toPlainText().simplified();
}

QString withoutMnemonic(const QString& caption) {
    QString plain;
    plain.reserve(caption.size());
    for (qsizetype i = 0; i < caption.size(); ++i) {
        if (caption[i] == QLatin1Char('&') && i + 1 < caption.size())
            ++i;
        plain += caption[i];
    }
    return plain;
}

QString formatDecibels(double db) {
    const QLocale locale;
    // Rounded first, so that -0.04 reads "+0.0" and never "-0.0".
    const double tenths = std::round(db * 10.0) / 10.0;
    const QString digits = locale.toString(tenths == 0.0 ? 0.0 : tenths, 'f', 1);
    return tenths >= 0.0 ? locale.positiveSign() + digits : digits;
}

} // namespace waxline::ui
