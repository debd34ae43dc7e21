// The export folder's lock: one holder at a time, the refused side told who holds it, and no
// lock left behind by a holder that died.
#include "exportfolder/ExportFolderLock.h"
#include "support/Signals.h"

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <fstream>

namespace waxline {
namespace {

using Outcome = ExportFolderLock::Outcome;

TEST(ExportFolderLock, OneHolderAtATimeAndTheOtherLearnsWho) {
    test::TempDir dir;
    const struct {
        FolderUse first;
        FolderUse second;
    } cases[] = {
        {FolderUse::Recording, FolderUse::Exporting}, {FolderUse::Exporting, FolderUse::Exporting},
        {FolderUse::Exporting, FolderUse::Recording}, {FolderUse::Recutting, FolderUse::Exporting},
        {FolderUse::Recording, FolderUse::Recutting},
    };
    for (const auto& c : cases) {
        ExportFolderLock first;
        ASSERT_EQ(first.tryLock(dir.path(), c.first, "waxline-cli"), Outcome::Taken);
        EXPECT_TRUE(first.held());

        ExportFolderLock second;
        ASSERT_EQ(second.tryLock(dir.path(), c.second, "Waxline"), Outcome::Held);
        EXPECT_FALSE(second.held());
        EXPECT_EQ(second.holder().program, "waxline-cli");
        EXPECT_EQ(second.holder().pid, static_cast<long>(getpid()));
        ASSERT_TRUE(second.holder().use.has_value());
        EXPECT_EQ(*second.holder().use, c.first);

        first.unlock();
        EXPECT_FALSE(first.held());
        ASSERT_EQ(second.tryLock(dir.path(), c.second, "Waxline"), Outcome::Taken);
        ExportFolderLock third;
        ASSERT_EQ(third.tryLock(dir.path(), c.first, "waxline-cli"), Outcome::Held);
        EXPECT_EQ(third.holder().program, "Waxline");
    }
}

// Another process holds the lock; once it is killed, the lock is free without anyone cleaning up.
TEST(ExportFolderLock, AKilledHolderLeavesTheFolderFree) {
    test::TempDir dir;
    int ready[2];
    ASSERT_EQ(pipe(ready), 0);
    const pid_t child = fork();
    if (child == 0) {
        ExportFolderLock lock;
        const char answer =
            lock.tryLock(dir.path(), FolderUse::Recording, "recorder") == Outcome::Taken ? 'y'
                                                                                         : 'n';
        (void)!write(ready[1], &answer, 1);
        pause();
        _exit(0);
    }
    ASSERT_GT(child, 0);
    close(ready[1]);
    char answer = 0;
    ASSERT_EQ(read(ready[0], &answer, 1), 1);
    close(ready[0]);
    ASSERT_EQ(answer, 'y');

    ExportFolderLock mine;
    EXPECT_EQ(mine.tryLock(dir.path(), FolderUse::Exporting, "exporter"), Outcome::Held);
    EXPECT_EQ(mine.holder().pid, static_cast<long>(child));
    EXPECT_EQ(mine.holder().program, "recorder");
    EXPECT_EQ(mine.holder().use, FolderUse::Recording);

    kill(child, SIGKILL);
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(mine.tryLock(dir.path(), FolderUse::Exporting, "exporter"), Outcome::Taken);
}

// The note says who holds the lock while it is held; afterwards the file stays, emptied, so no
// stale note can name a holder that is gone. A folder that is not there fails with its reason.
TEST(ExportFolderLock, TheLockFileStaysAndItsNoteGoesWithTheLock) {
    test::TempDir dir;
    ExportFolderLock missing;
    EXPECT_EQ(missing.tryLock(dir.file("missing"), FolderUse::Recording, "x"), Outcome::Failed);
    EXPECT_EQ(missing.errorNumber(), ENOENT);
    EXPECT_FALSE(missing.held());
    const std::string path = ExportFolderLock::lockFilePath(dir.path());
    {
        ExportFolderLock lock;
        ASSERT_EQ(lock.tryLock(dir.path(), FolderUse::Exporting, "waxline-cli"), Outcome::Taken);
        std::ifstream in(path);
        std::string text((std::istreambuf_iterator<char>(in)), {});
        EXPECT_NE(text.find("use=exporting"), std::string::npos) << text;
    }
    ASSERT_TRUE(std::filesystem::exists(path));
    EXPECT_EQ(std::filesystem::file_size(path), 0u);
}

} // namespace
} // namespace waxline
