#include "desktop/caption_fit.h"

#include <QFont>
#include <QFontMetrics>
#include <QRegularExpression>
#include <QWidget>

namespace partkeep {

namespace {

constexpr int smallest_percent = 80; // of the dialog's font; below that, eliding reads better

int WidthOf(const QFont& font, const QString& caption)
{
    return QFontMetrics(font).size(Qt::TextSingleLine | Qt::TextShowMnemonic, caption).width();
}

} // namespace

QString FitCaption(QWidget& widget, const QFont& font, const QString& caption, int room)
{
    const QString line = caption.trimmed();
    const int smallest = font.pixelSize() * smallest_percent / 100;
    QFont fitting = font;
    while (WidthOf(fitting, line) > room && fitting.pixelSize() > smallest) {
        fitting.setPixelSize(fitting.pixelSize() - 1);
    }
    widget.setFont(fitting);
    const bool fits = WidthOf(fitting, line) <= room;
    widget.setToolTip(fits ? QString() : SpokenCaption(caption));
    return fits ? line : QFontMetrics(fitting).elidedText(line, Qt::ElideRight, room, Qt::TextShowMnemonic);
}

QString SpokenCaption(QString caption)
{
    static const QRegularExpression access_letter(QStringLiteral("\\s*\\(&.\\)|&(?=.)"));
    return caption.remove(access_letter).simplified();
}

} // namespace partkeep
