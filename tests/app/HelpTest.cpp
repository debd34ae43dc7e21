#include "app/AppRig.h"
#include "app/HelpBrowser.h"
#include "ui/help/HelpDialog.h"

#include <QDir>
#include <QFile>
#include <QTextBrowser>

namespace {

// Help opens in the desktop's browser when it can; when the opener fails, or there is none,
// the same page appears in the application's own window (one, shown again when asked again).
TEST(Help, TheBrowserOpensThePageOrElseTheHelpWindowShowsIt) {
    enum class Opener { Succeeds, Fails, Missing };
    for (const Opener opener : {Opener::Succeeds, Opener::Fails, Opener::Missing}) {
        SCOPED_TRACE(static_cast<int>(opener));
        waxline::test::App app;
        app.start();
        app.controller->openUrl = nullptr;
        if (opener != Opener::Missing)
            app.controller->openUrl = [opener](const QUrl&) { return opener == Opener::Succeeds; };
        app.press("showHelp:");
        waxline::ui::HelpDialog* shown = app.controller->helpWindow();
        ASSERT_EQ(shown != nullptr, opener != Opener::Succeeds);
        if (!shown)
            continue;
        EXPECT_TRUE(shown->isVisible());
        EXPECT_TRUE(shown->browser()->source().isLocalFile());
        EXPECT_TRUE(shown->browser()->toPlainText().contains(QStringLiteral("Waxline Help")));
        shown->close();
        app.press("showHelp:");
        EXPECT_EQ(app.controller->helpWindow(), shown);
        EXPECT_TRUE(shown->isVisible());
    }
}

// Whether a program for HTML is listed, read from the freedesktop MIME files a folder holds.
TEST(Help, AProgramForHtmlIsListedOnlyByANonEmptyEntryNotRemovedAgain) {
    struct Row {
        const char* file;
        const char* content;
        bool listed;
    };
    const Row rows[] = {
        {"mimeinfo.cache", "[MIME Cache]\ntext/plain=vim.desktop;\n", false},
        {"mimeinfo.cache", "[MIME Cache]\ntext/html=firefox-esr.desktop;\n", true},
        {"defaults.list", "[Default Applications]\ntext/html=browser.desktop\n", true},
        {"mimeapps.list", "[Default Applications]\ntext/html=\n", false},
        {"mimeapps.list",
         "[Added Associations]\ntext/html=w.desktop;\n[Removed "
         "Associations]\ntext/html=w.desktop;\n",
         false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.content);
        waxline::test::TempDir folder;
        QFile file(QDir(QString::fromStdString(folder.path())).filePath(row.file));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(row.content);
        file.close();
        const QStringList folders{QStringLiteral("/nonexistent"),
                                  QString::fromStdString(folder.path())};
        EXPECT_EQ(waxline::app::htmlHandlerListed(folders), row.listed);
    }
}

} // namespace
