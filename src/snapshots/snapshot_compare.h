#pragma once
// Two snapshots in one frame: A left of a vertical wipe line, B right of it, under the preview's
// one zoom and offset. The preview owns what is compared; the label that shows the preview paints
// the wipe and lets the artist drag its line.

#include <QLabel>
#include <QPixmap>
#include <QString>

#include <memory>

class QTemporaryDir;

namespace cobaltrig {

/// What the preview compares while a compare runs. A is the preview's own image; B is held here,
/// read whole, and painted at A's width.
struct WipeCompare {
    WipeCompare();
    ~WipeCompare();
    WipeCompare(const WipeCompare&) = delete;
    WipeCompare& operator=(const WipeCompare&) = delete;

    /// The preview's image before the compare began: what it shows again when the compare ends.
    QString base;
    QString a;
    QString b;
    QString caption_a;
    QString caption_b;
    QPixmap pixmap_b;
    /// Where the line stands, as a part of the image's width, so that a zoom keeps it on the same
    /// spot of the picture.
    double split = 0.5;
    /// Off shows A alone.
    bool wipe = true;
    /// Holds the render of what the viewer shows now, for as long as it is compared; removing it
    /// removes the file.
    std::unique_ptr<QTemporaryDir> now_dir;
};

/// The text of a corner label: the file's name and, when it has one, the start of its comment.
QString compare_caption(const QString& src);

/// The label that shows the preview. It paints only the part of the zoomed image in view: a plain
/// QLabel keeps a copy of its pixmap scaled to its whole size, gigabytes at a high zoom. While a
/// compare runs it paints the wipe, and a press near the line drags it; every other press goes on
/// to the preview, which drags the window.
class PreviewLabel : public QLabel {
public:
    using QLabel::QLabel;

    /// The compare to paint, or none for the single image; the preview sets and clears it.
    void set_compare(WipeCompare* compare);
    WipeCompare* compare() const { return compare_; }
    /// The line's position in the label's pixels.
    int line_x() const;

    /// How near the line, in pixels either side, a press takes hold of it.
    static constexpr int kGrab = 8;

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    bool near_line(int x) const;
    WipeCompare* compare_ = nullptr;
    bool dragging_ = false;
};

} // namespace cobaltrig
