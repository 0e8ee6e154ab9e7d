#include "partlibrary/content_helper.h"

#include <csignal>
#include <exception>
#include <utility>

namespace partkeep {

namespace {

// A host's signals are for its own threads.
class CSignalsBlocked {
public:
    CSignalsBlocked()
    {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before_);
    }
    ~CSignalsBlocked() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    CSignalsBlocked(const CSignalsBlocked&) = delete;
    CSignalsBlocked& operator=(const CSignalsBlocked&) = delete;

private:
    sigset_t before_ = {};
};

} // namespace

CContentHelper::~CContentHelper()
{
    {
        const std::lock_guard lock(mutex_);
        ended_ = true;
    }
    changed_.notify_all();
    if (thread_.joinable()) {
        thread_.join();
    }
}

// The thread takes over the signals that are blocked where it is made.
void CContentHelper::Start()
{
    const CSignalsBlocked blocked;
    try {
        thread_ = std::thread([this] { Work(); });
    } catch (const std::exception&) {
        ended_ = true;
    }
}

void CContentHelper::Offer(const Job& job)
{
    if (!thread_.joinable() && !ended_ && std::thread::hardware_concurrency() > 1) {
        Start();
    }
    if (!thread_.joinable()) {
        return;
    }
    {
        const std::lock_guard lock(mutex_);
        job_ = &job;
    }
    changed_.notify_all();
}

void CContentHelper::Recall()
{
    std::unique_lock lock(mutex_);
    job_ = nullptr;
    changed_.wait(lock, [this] { return !busy_; });
}

void CContentHelper::Work()
{
    std::unique_ptr<CContentReader> reader;
    std::unique_lock lock(mutex_);
    for (;;) {
        changed_.wait(lock, [this] { return ended_ || job_ != nullptr; });
        if (ended_) {
            return;
        }
        const Job* const job = std::exchange(job_, nullptr);
        busy_ = true;
        lock.unlock();
        Help(*job, reader);
        lock.lock();
        busy_ = false;
        changed_.notify_all();
    }
}

// Whatever goes wrong before the job begins is left to the caller, who does the job alone then.
void CContentHelper::Help(const Job& job, std::unique_ptr<CContentReader>& reader) const
{
    try {
        LibraryProblem ignored;
        if (reader == nullptr) {
            reader = CContentReader::Open(file_, OpenMode::ReadAlong, ignored);
        }
        if (reader != nullptr && reader->Hold()) {
            job(*reader);
            reader->Release();
        }
    } catch (const std::exception&) {
        reader.reset();
    }
}

} // namespace partkeep
