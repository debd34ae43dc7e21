#include "ui/Catalogue.h"

#include <QCoreApplication>
#include <QTextDocument>
#include <QTranslator>

namespace waxline::ui {

QString localizedKey(const QString& key) {
    const QByteArray utf8 = key.toUtf8();
    const QString text = QCoreApplication::translate("Localizable", utf8.constData());
    if (text.isEmpty() || text == key)
        return {};
    return text;
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
    return language;
}

QString plainTextOf(const QString& richOrPlain) {
    if (!Qt::mightBeRichText(richOrPlain))
        return richOrPlain;
    QTextDocument document;
    document.setHtml(richOrPlain);
    return document.toPlainText().simplified();
}

} // namespace waxline::ui
