#include "app/AppRig.h"
#include "app/HelpBrowser.h"
#include "support/MediaFiles.h"
#include "ui/help/HelpDialog.h"

#include <QDir>
#include <QFile>
#include <QTextBrowser>

namespace {

using waxline::test::App;

// Help opens in the desktop's browser when it can; when the opener fails, or there is none,
// the same page appears in the application's own window instead of nothing.
TEST(Help, TheBrowserOpensThePageOrElseTheHelpWindowShowsIt) {
    enum class Opener { Succeeds, Fails, Missing };
    struct Row {
        Opener opener;
        bool helpWindow;
    };
    const Row rows[] = {
        {Opener::Succeeds, false},
        {Opener::Fails, true},
        {Opener::Missing, true},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(static_cast<int>(row.opener));
        App app;
        app.start();
        std::vector<QUrl> tried;
        if (row.opener == Opener::Missing)
            app.controller->openUrl = nullptr;
        else
            app.controller->openUrl = [&tried, &row](const QUrl& url) {
                tried.push_back(url);
                return row.opener == Opener::Succeeds;
            };
        app.press("showHelp:");
        waxline::ui::HelpDialog* shown = app.controller->helpWindow();
        ASSERT_EQ(shown != nullptr, row.helpWindow);
        if (!shown)
            continue;
        EXPECT_TRUE(shown->isVisible());
        EXPECT_FALSE(shown->isModal()) << "the wizard stays usable beside the help";
        const QUrl source = shown->browser()->source();
        ASSERT_TRUE(source.isLocalFile());
        if (!tried.empty()) {
            EXPECT_EQ(source, tried.front()) << "the page the browser was offered";
        }
        EXPECT_TRUE(shown->browser()->toPlainText().contains(QStringLiteral("Waxline Help")));
        // Asked again, the one window comes back.
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
        {nullptr, nullptr, false},
        {"mimeinfo.cache", "[MIME Cache]\ntext/plain=vim.desktop;\n", false},
        {"mimeinfo.cache", "[MIME Cache]\ntext/html=firefox-esr.desktop;\n", true},
        {"defaults.list", "[Default Applications]\ntext/html=browser.desktop\n", true},
        {"mimeapps.list", "[Default Applications]\ntext/html=\n", false},
        {"mimeapps.list",
         "[Added Associations]\ntext/html=web.desktop;\n[Removed "
         "Associations]\ntext/html=web.desktop;\n",
         false},
        {"mimeapps.list", "[Default Applications]\ntext/html=;\n", false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.content ? row.content : "no file");
        waxline::test::TempDir folder;
        if (row.file) {
            QFile file(QDir(QString::fromStdString(folder.path())).filePath(row.file));
            ASSERT_TRUE(file.open(QIODevice::WriteOnly));
            file.write(row.content);
        }
        const QStringList folders{QStringLiteral("/nonexistent/applications"),
                                  QString::fromStdString(folder.path())};
        EXPECT_EQ(waxline::app::htmlHandlerListed(folders), row.listed);
    }
}

} // namespace
