// Hosts with and without a Qt application of their own, through the shared library alone.

#include "partkeep_read.hpp"

#include "tests/support/temporary_folder.h"

#include <QApplication>
#include <QTest>
#include <QTimer>
#include <QWindow>

#include <gtest/gtest.h>

namespace {

struct SeenDialog {
    QString title;
    QWidget* parent = nullptr;
    Qt::WindowModality modality = Qt::NonModal;
};

SeenDialog seen;

// Arranged as soon as there is an application, whoever makes it.
void CancelTheDialog()
{
    QTimer::singleShot(0, qApp, [] {
        QWidget* dialog = QApplication::activeModalWidget();
        if (dialog == nullptr || !dialog->isActiveWindow()) {
            CancelTheDialog();
            return;
        }
        seen = {dialog->windowTitle(), dialog->parentWidget(), dialog->windowModality()};
        QTest::keyClick(dialog->windowHandle(), Qt::Key_Escape);
    });
}

Q_COREAPP_STARTUP_FUNCTION(CancelTheDialog)

class HostApplication : public testing::Test {
protected:
    HostApplication()
    {
        qputenv("XDG_CONFIG_HOME", QByteArray::fromStdString(folder_.Path("config").string()));
        std::filesystem::create_directories(folder_.Path("config/partkeep-read"));
        std::filesystem::create_directories(folder_.Path("Work"));
        partkeep::WriteBytes(folder_.Path("config/partkeep-read/registry.ini"),
                             "[HKEY_LOCAL_MACHINE\\software\\Velmar\\ORVIC]\ninstallpath=" + folder_.Path().string() +
                                 "\n[HKEY_CURRENT_USER\\software\\Velmar\\ORVIC\\PartLibrary]\nfolder=" +
                                 folder_.Path().string() + "\n");
    }

    // One cancelled run of a new object.
    void Run()
    {
        seen = {};
        partkeep_read_api::Reader reader;
        reader.SetWorkingFolder(folder_.Path("Work").string() + "/");
        reader.SetLanguageId(2);
        EXPECT_FALSE(reader.Invoke());
        EXPECT_EQ(reader.NumberOfPartsSelected(), 0);
        EXPECT_EQ(seen.title, QStringLiteral("Partkeep Read"));
    }

    partkeep::CTemporaryFolder folder_;
};

TEST_F(HostApplication, OneIsMadeForAHostThatHasNoneAndGoesWithTheObject)
{
    for (int round = 0; round < 2; ++round) {
        ASSERT_EQ(QCoreApplication::instance(), nullptr);
        Run();
        EXPECT_EQ(seen.parent, nullptr);
        EXPECT_EQ(QCoreApplication::instance(), nullptr) << "left behind";
    }
}

// Whatever it draws on.
TEST_F(HostApplication, TheHostsOwnIsUsedAndLeftAsItWas)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    int count = 1;
    char name[] = "host";
    char* arguments[] = {name, nullptr};
    QApplication application(count, arguments);
    QWidget main_window;
    main_window.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&main_window));
    Run();
    EXPECT_EQ(seen.parent, &main_window);
    EXPECT_EQ(seen.modality, Qt::WindowModal);
    EXPECT_EQ(QCoreApplication::instance(), &application);
    EXPECT_TRUE(QApplication::quitOnLastWindowClosed());
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);
    EXPECT_EQ(QApplication::topLevelWidgets(), QWidgetList{&main_window});
}

} // namespace
