// The find index: comments and flags of one snapshot directory, read off the event loop's thread.

#include "snapshots/snapshot_find.h"

#include "frame/guarded.h"
#include "frame/siblings.h"

#include <QEvent>
#include <QFileInfo>
#include <QThread>
#include <QTimer>
#include <QWidget>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <system_error>
#include <thread>
#include <vector>

namespace cobaltrig {

namespace {

// A refresh reads this many new snapshots at once, so that one just taken is found at once; more
// (a directory filled from elsewhere) wait for the readers.
constexpr int kReadAtOnce = 32;
// What the event loop's thread reads per pass when a replaced `helper.load_metadata` must answer.
constexpr int kSlice = 200;

// When the metadata file was last written, by the file system's clock, and its size; a size of
// -1 for a snapshot without one.
struct Stamp {
    qint64 modified = 0;
    qint64 size = -1;
};

Stamp stamp_of(const QString& src) {
    const QFileInfo info(snapshot_files::sibling(src, QStringLiteral(".xml")));
    if (!info.isFile())
        return {};
    // Compared, never shown: the file system's own count will do, without a time zone.
    std::error_code failed;
    const auto modified = std::filesystem::last_write_time(
        std::filesystem::path(info.filePath().toStdU16String()), failed);
    if (failed)
        return {};
    return {static_cast<qint64>(modified.time_since_epoch().count()), info.size()};
}

} // namespace

FindEntry find_entry(const QString& src, const snapshot_files::Metadata& meta) {
    FindEntry entry;
    const int slash =
        std::max(src.lastIndexOf(QLatin1Char('/')), src.lastIndexOf(QLatin1Char('\\')));
    entry.text = (src.mid(slash + 1) + QLatin1Char('\n') + meta.comment).toCaseFolded();
    if (const std::optional<QColor> colour = snapshot_files::flag_colour(meta.flag.trimmed()))
        entry.flag = colour->rgb();
    return entry;
}

bool find_matches(const FindEntry& entry, const QString& folded, std::optional<QRgb> flag) {
    if (flag && entry.flag != flag)
        return false;
    return folded.isEmpty() || entry.text.contains(folded, Qt::CaseSensitive);
}

struct FindIndex::Job {
    QStringList srcs;
    QHash<QString, FindEntry> known;
    bool native = true;
    std::vector<FindEntry> read;
    std::vector<QString> failures;
    std::atomic<int> next{0};
    std::atomic<int> running{0};
    std::atomic<bool> cancel{false};
    std::vector<std::thread> threads;

    // One snapshot: kept as known while its metadata file is as it was, read again otherwise.
    void read_one(int i) {
        // Read-only access from several threads at once: `at`, which never detaches the list.
        const QString& src = srcs.at(i);
        const Stamp stamp = stamp_of(src);
        const auto old = known.constFind(src);
        if (old != known.constEnd() && old->modified == stamp.modified && old->size == stamp.size) {
            read[i] = *old;
            return;
        }
        snapshot_files::Metadata meta;
        if (!native) {
            meta = snapshot_files::load_metadata(src);
        } else if (stamp.size >= 0) {
            try {
                meta = snapshot_files::read_metadata(src);
            } catch (const snapshot_files::FileError& error) {
                // Named on the console by the event loop's thread: this one has no Python.
                failures[i] = QString::fromStdString(error.what());
            }
        }
        read[i] = find_entry(src, meta);
        read[i].modified = stamp.modified;
        read[i].size = stamp.size;
    }
};

FindIndex::FindIndex(QObject* parent) : QObject(parent) {}

FindIndex::~FindIndex() {
    stop();
}

void FindIndex::start_after_first_paint(QWidget* widget) {
    widget->installEventFilter(this);
}

bool FindIndex::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::Paint && !painted_) {
        painted_ = true;
        watched->removeEventFilter(this);
        // Once this paint is done: the first rows are on screen before any reading begins.
        QTimer::singleShot(0, this, [this] { guarded("find index", [this] { start(); }); });
    }
    return QObject::eventFilter(watched, event);
}

void FindIndex::update(const QString& directory, const QStringList& srcs) {
    if (directory != directory_) {
        stop();
        entries_.clear();
        ++generation_;
        told_.clear();
        ready_ = false;
        directory_ = directory;
    }
    srcs_ = srcs;
    if (ready_) {
        // A snapshot just taken or moved in is found at once; what changed on disk follows.
        QStringList fresh;
        for (const QString& src : srcs_)
            if (!entries_.contains(src) && fresh.size() <= kReadAtOnce)
                fresh << src;
        if (fresh.size() <= kReadAtOnce)
            for (const QString& src : fresh)
                set(src, snapshot_files::load_metadata(src));
    }
    if (painted_)
        start();
}

void FindIndex::set(const QString& src, const snapshot_files::Metadata& meta) {
    FindEntry entry = find_entry(src, meta);
    const Stamp stamp = stamp_of(src);
    entry.modified = stamp.modified;
    entry.size = stamp.size;
    // A reading under way may have read the file before this change; what is told here wins.
    if (job_)
        told_.insert(src, entry);
    const auto old = entries_.constFind(src);
    const bool same =
        old != entries_.constEnd() && old->text == entry.text && old->flag == entry.flag;
    entries_.insert(src, entry);
    ++generation_;
    // Told from the middle of a row's update: the rows shown follow once that is done.
    if (!same && !change_posted_) {
        change_posted_ = true;
        QTimer::singleShot(0, this, [this] {
            change_posted_ = false;
            Q_EMIT changed();
        });
    }
}

const FindEntry* FindIndex::find(const QString& src) const {
    const auto it = entries_.constFind(src);
    return it == entries_.constEnd() ? nullptr : &*it;
}

void FindIndex::start() {
    stop();
    auto job = std::make_shared<Job>();
    job->srcs = srcs_;
    job->known = entries_;
    job->read.resize(srcs_.size());
    job->failures.resize(srcs_.size());
    job->native = siblings::is_original("load_metadata");
    job_ = job;
    const int count = srcs_.size();
    if (!job->native) {
        // A replaced reader is Python: it answers on this thread, a slice per pass.
        QTimer::singleShot(0, this, [this] { guarded("find index", [this] { read_slice(); }); });
        return;
    }
    // One thread is left to the window; on this machine or a larger one, the rest read.
    const int threads = count < 256 ? 1 : std::clamp(QThread::idealThreadCount() - 1, 1, 4);
    job->running = threads;
    for (int t = 0; t < threads; ++t) {
        try {
            job->threads.emplace_back([this, job, count] {
                for (int i = job->next++; i < count && !job->cancel; i = job->next++)
                    job->read_one(i);
                if (--job->running == 0 && !job->cancel)
                    QMetaObject::invokeMethod(
                        this,
                        [this, job] {
                            guarded("find index", [&] {
                                if (job_ == job)
                                    deliver(*job);
                            });
                        },
                        Qt::QueuedConnection);
            });
        } catch (const std::system_error&) {
            // No more threads to be had: those started share the list.
            job->running -= threads - t;
            break;
        }
    }
    if (job->threads.empty()) {
        // Not one thread: this one reads, now.
        for (int i = 0; i < count; ++i)
            job->read_one(i);
        deliver(*job);
    }
}

void FindIndex::read_slice() {
    if (!job_)
        return;
    const std::shared_ptr<Job> job = job_;
    const int count = job->srcs.size();
    const int end = std::min(count, job->next + kSlice);
    for (int i = job->next; i < end; ++i)
        job->read_one(i);
    job->next = end;
    if (end < count)
        QTimer::singleShot(0, this, [this, job] {
            guarded("find index", [&] {
                if (job_ == job)
                    read_slice();
            });
        });
    else
        deliver(*job);
}

void FindIndex::stop() {
    if (!job_)
        return;
    job_->cancel = true;
    // The readers touch neither Python nor a widget: waiting for them here cannot deadlock.
    for (std::thread& thread : job_->threads)
        if (thread.joinable())
            thread.join();
    job_.reset();
}

void FindIndex::deliver(Job& job) {
    for (std::thread& thread : job.threads)
        if (thread.joinable())
            thread.join();
    QHash<QString, FindEntry> fresh;
    fresh.reserve(job.srcs.size());
    for (int i = 0; i < job.srcs.size(); ++i) {
        fresh.insert(job.srcs[i], job.read[i]);
        if (!job.failures[i].isEmpty())
            snapshot_files::report_once(
                snapshot_files::sibling(job.srcs[i], QStringLiteral(".xml")), job.failures[i]);
    }
    for (auto it = told_.constBegin(); it != told_.constEnd(); ++it)
        if (fresh.contains(it.key()))
            fresh.insert(it.key(), it.value());
    entries_.swap(fresh);
    ++generation_;
    told_.clear();
    ready_ = true;
    job_.reset();
    Q_EMIT changed();
}

} // namespace cobaltrig
