#include "snapshots/snapshot_compare.h"

#include "frame/guarded.h"
#include "snapshots/snapshot_files.h"
#include "snapshots/snapshot_thumbnail.h"

#include <QColor>
#include <QFileInfo>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QPen>
#include <QTemporaryDir>

#include <algorithm>
#include <cmath>

namespace cobaltrig {

namespace {

// How much of a comment a corner label shows: enough to tell takes apart, not to hide the image.
constexpr int kCaptionComment = 40;

// Draws the part `area` of `pixmap` laid over the whole of `whole`.
void draw_part(QPainter& painter, const QPixmap& pixmap, const QRectF& whole, const QRectF& area) {
    if (pixmap.isNull() || area.isEmpty() || whole.isEmpty())
        return;
    const double sx = pixmap.width() / whole.width();
    const double sy = pixmap.height() / whole.height();
    const QRectF source((area.x() - whole.x()) * sx, (area.y() - whole.y()) * sy,
                        area.width() * sx, area.height() * sy);
    painter.drawPixmap(area, pixmap, source);
}

} // namespace

WipeCompare::WipeCompare() = default;
WipeCompare::~WipeCompare() = default;

QString compare_caption(const QString& src) {
    QString caption = QFileInfo(src).fileName();
    const QString comment =
        snapshot_files::load_metadata(src).comment.section(QLatin1Char('\n'), 0, 0).trimmed();
    if (comment.isEmpty())
        return caption;
    caption += QStringLiteral(": ");
    if (comment.size() <= kCaptionComment)
        return caption + comment;
    return caption + comment.left(kCaptionComment).trimmed() + QChar(0x2026);
}

void PreviewLabel::set_compare(WipeCompare* compare) {
    compare_ = compare;
    dragging_ = false;
    // The pointer shows where the line can be taken hold of; without a compare no move without a
    // button is of interest here.
    setMouseTracking(compare != nullptr);
    unsetCursor();
    update();
}

int PreviewLabel::line_x() const {
    const QRect target = contentsRect();
    const double split = compare_ ? compare_->split : 0.5;
    return target.x() + static_cast<int>(std::lround(split * target.width()));
}

bool PreviewLabel::near_line(int x) const {
    return compare_ && compare_->wipe && std::abs(x - line_x()) <= kGrab;
}

void PreviewLabel::paintEvent(QPaintEvent* event) {
    if (pixmap(Qt::ReturnByValue).isNull()) {
        QLabel::paintEvent(event);
        return;
    }
    QFrame::paintEvent(event);
    if (!compare_ || !compare_->wipe) {
        paint_scaled_pixmap(*this, event->rect());
        return;
    }
    const QRect target = contentsRect();
    const QRectF exposed = QRectF(event->rect() & target);
    const int x = line_x();
    QPainter painter(this);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);

    const QRectF left(target.x(), target.y(), x - target.x(), target.height());
    draw_part(painter, pixmap(Qt::ReturnByValue), QRectF(target), exposed & left);

    // B at A's width: images of different shapes stay in proportion, and a taller B is cut
    // where A ends.
    const QPixmap& b = compare_->pixmap_b;
    if (!b.isNull()) {
        const double height = target.width() * static_cast<double>(b.height()) / b.width();
        const QRectF whole_b(target.x(), target.y(), target.width(), height);
        const QRectF right(x, target.y(), target.right() + 1 - x, target.height());
        draw_part(painter, b, whole_b, exposed & right & whole_b);
    }

    // A light line with a dark edge stands out on bright and dark pictures alike.
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setPen(QPen(QColor(0, 0, 0, 160), 3));
    painter.drawLine(x, target.top(), x, target.bottom());
    painter.setPen(QPen(QColor(255, 255, 255, 230), 1));
    painter.drawLine(x, target.top(), x, target.bottom());
}

void PreviewLabel::mousePressEvent(QMouseEvent* event) {
    const int x = event->pos().x();
    if (event->button() == Qt::LeftButton && near_line(x)) {
        dragging_ = true;
        event->accept();
        return;
    }
    QLabel::mousePressEvent(event);
}

void PreviewLabel::mouseMoveEvent(QMouseEvent* event) {
    const int x = event->pos().x();
    if (dragging_ && compare_) {
        guarded("wipe dragged", [&] {
            const QRect target = contentsRect();
            const double width = std::max(1, target.width());
            const double split = (x - target.x()) / width;
            compare_->split = std::clamp(split, 0.0, 1.0);
            update();
        });
        event->accept();
        return;
    }
    if (event->buttons() == Qt::NoButton) {
        // Moves without a button come only while comparing, for the pointer's shape; they are no
        // drag of the window.
        if (near_line(x))
            setCursor(Qt::SplitHCursor);
        else
            unsetCursor();
        event->accept();
        return;
    }
    QLabel::mouseMoveEvent(event);
}

void PreviewLabel::mouseReleaseEvent(QMouseEvent* event) {
    if (dragging_ && event->button() == Qt::LeftButton) {
        dragging_ = false;
        event->accept();
        return;
    }
    QLabel::mouseReleaseEvent(event);
}

} // namespace cobaltrig
