#pragma once
// What finding snapshots by comment, name and flag needs to be instant on a long list: the comment
// and flag of every snapshot of one directory, read on other threads once the browser has painted
// its first rows, and kept up to date by each refresh instead of being read again whole.

#include "snapshots/snapshot_files.h"

#include <QColor>
#include <QHash>
#include <QObject>
#include <QString>
#include <QStringList>

#include <memory>
#include <optional>

class QWidget;

namespace cobaltrig {

/// What finding needs of one snapshot.
struct FindEntry {
    /// The file name and the comment, case-folded, one line each.
    QString text;
    /// The flag's colour; none without a flag or with one that is no colour.
    std::optional<QRgb> flag;
    /// When and how large the metadata file was when read; a refresh reads only what changed.
    qint64 modified = 0;
    qint64 size = -1;
};

/// The entry of the snapshot `src` with the metadata `meta`; the metadata file's stamp is the
/// caller's.
FindEntry find_entry(const QString& src, const snapshot_files::Metadata& meta);

/// Whether `entry` holds `folded` (a case-folded text; empty matches all) and carries `flag`
/// (none matches all).
bool find_matches(const FindEntry& entry, const QString& folded, std::optional<QRgb> flag);

/// The index of one snapshot directory. Reading runs on threads that touch neither Python nor a
/// widget; what they read comes back through the event loop. With a replaced
/// `helper.load_metadata` it is read on this thread instead, a slice per pass of the event loop.
class FindIndex : public QObject {
    Q_OBJECT
public:
    explicit FindIndex(QObject* parent);
    /// Stops the readers and waits for them.
    ~FindIndex() override;

    /// Reading waits for the first paint of `widget`, so that it never delays the first rows.
    void start_after_first_paint(QWidget* widget);
    /// Brings the index to the listing `srcs` of `directory`: a directory of its own starts
    /// afresh; the same one keeps what is known and reads only what is new or changed on disk.
    void update(const QString& directory, const QStringList& srcs);
    /// What a row read itself for `src` (a flag just set, for one): taken at once.
    void set(const QString& src, const snapshot_files::Metadata& meta);

    /// Whether the first reading of the directory is done.
    bool ready() const { return ready_; }
    /// Whether reading runs now.
    bool reading() const { return job_ != nullptr; }
    const QString& directory() const { return directory_; }
    /// The entry of `src`; none while it is unknown. Valid until the next change of the index.
    const FindEntry* find(const QString& src) const;
    /// Counts the changes of the entries, so that what holds them knows when to look again.
    quint64 generation() const { return generation_; }

Q_SIGNALS:
    /// The entries changed: the first reading is done, a refresh read what changed, or a row
    /// told of its metadata.
    void changed();

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    struct Job;
    void start();
    void stop();
    void deliver(Job& job);
    void read_slice();

    QString directory_;
    QStringList srcs_;
    QHash<QString, FindEntry> entries_;
    /// What rows told while a reading ran, which may have read those files before the change.
    QHash<QString, FindEntry> told_;
    bool painted_ = false;
    bool ready_ = false;
    bool change_posted_ = false;
    quint64 generation_ = 1;
    std::shared_ptr<Job> job_;
};

} // namespace cobaltrig
