// make-icons SVG FOLDER: renders the program's icon in the sizes that desktops look for, as FOLDER/SIZE.png.

#include <QDir>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>

int main(int argc, char** argv) {
    if (argc != 3) return 2;
    QSvgRenderer art(QString::fromLocal8Bit(argv[1]));
    const QDir folder(QString::fromLocal8Bit(argv[2]));
    if (!art.isValid() || !folder.mkpath(QStringLiteral("."))) return 1;
    for (const int size : {16, 22, 24, 32, 48, 64, 128, 256}) {
        QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        art.render(&painter);
        painter.end();
        if (!image.save(folder.filePath(QStringLiteral("%1.png").arg(size)))) return 1;
    }
    return 0;
}
