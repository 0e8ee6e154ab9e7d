#include "desktop/qt_application.h"

#include "desktop/screen_watch.h"
#include "host/windows_part.h"

#include <QApplication>
#include <QThread>

#include <clocale>
#include <string>

namespace partkeep {

namespace {

// The toolkit turns the whole process to the user's locale. Of that, the host gets numbers and all else back at once;
// the characters, which the windows' input needs, when the application goes.
class CHostLocale {
public:
    CHostLocale() = default;
    ~CHostLocale() { std::setlocale(LC_CTYPE, characters_.c_str()); }
    CHostLocale(const CHostLocale&) = delete;
    CHostLocale& operator=(const CHostLocale&) = delete;

    void GiveBackAllButCharacters() const
    {
        const std::string toolkits = std::setlocale(LC_CTYPE, nullptr);
        std::setlocale(LC_ALL, all_.c_str());
        std::setlocale(LC_CTYPE, toolkits.c_str());
    }

private:
    std::string all_ = std::setlocale(LC_ALL, nullptr);
    std::string characters_ = std::setlocale(LC_CTYPE, nullptr);
};

// With the settings that outlive an application of the toolkit, and the host may yet make one of its own.
class COwnApplication {
public:
    COwnApplication() : quits_(QApplication::quitOnLastWindowClosed())
    {
        static int count = 1;
        static char name[] = "partkeep-read";
        static char* arguments[] = {name, nullptr};
        application_ = new QApplication(count, static_cast<char**>(arguments));
        CScreenWatch::KeepXlibFromExit();
        locale_.GiveBackAllButCharacters();
        QApplication::setQuitOnLastWindowClosed(false);
    }

    // On another thread than its own, or without its display server, it cannot be taken down and stays, which harms
    // nobody.
    ~COwnApplication()
    {
        if (application_->thread() != QThread::currentThread() ||
            application_->property(screen_lost_property).toBool()) {
            (void)watch_.release();
            return;
        }
        delete application_;
        QApplication::setQuitOnLastWindowClosed(quits_);
    }

    COwnApplication(const COwnApplication&) = delete;
    COwnApplication& operator=(const COwnApplication&) = delete;

private:
    CHostLocale locale_;
    std::unique_ptr<CScreenWatch> watch_ = std::make_unique<CScreenWatch>();
    bool quits_;
    QApplication* application_;
};

} // namespace

void CQtApplication::Ensure()
{
    static std::weak_ptr<COwnApplication> shared;
    if (made_ != nullptr) {
        return;
    }
    std::shared_ptr<COwnApplication> made = shared.lock();
    if (made == nullptr && QCoreApplication::instance() == nullptr) {
        made = std::make_shared<COwnApplication>();
        shared = made;
    }
    made_ = std::move(made);
}

} // namespace partkeep
