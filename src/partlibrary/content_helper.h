// A thread beside the calling one that reads along, on a connection of its own. It is only ever of help: where no
// thread can be had, or a writer is waiting for the library, the caller does all the work.
#pragma once

#include "partlibrary/content_reader.h"

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

namespace partkeep {

class CContentHelper {
public:
    using Job = std::function<void(CContentReader&)>;

    explicit CContentHelper(QString file) : file_(std::move(file)) {}
    ~CContentHelper();
    CContentHelper(const CContentHelper&) = delete;
    CContentHelper& operator=(const CContentHelper&) = delete;

    // Runs the job on the thread, which holds the library meanwhile. The caller holds it already, and keeps the
    // job until Recall.
    void Offer(const Job& job);

    // Takes the job back, or waits for its end.
    void Recall();

private:
    void Start();
    void Work();
    void Help(const Job& job, std::unique_ptr<CContentReader>& reader) const;

    QString file_;
    std::mutex mutex_;
    std::condition_variable changed_;
    const Job* job_ = nullptr; // offered and not yet begun
    bool busy_ = false;
    bool ended_ = false;
    std::thread thread_;
};

} // namespace partkeep
