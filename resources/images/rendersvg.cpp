// Renders a title image from its SVG source: rendersvg SOURCE.svg OUTPUT.png SCALE
// The output depends on nothing but the source and the scale.
#include <QCoreApplication>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>

#include <cstdio>

int main(int argc, char *argv[]) {
    if (argc != 4) {
        std::fprintf(stderr, "usage: rendersvg SOURCE.svg OUTPUT.png SCALE\n");
        return 2;
    }
    QCoreApplication application(argc, argv);
    const QString source = QString::fromLocal8Bit(argv[1]);
    const QString output = QString::fromLocal8Bit(argv[2]);
    const int scale = QString::fromLatin1(argv[3]).toInt();
    QSvgRenderer renderer(source);
    if (!renderer.isValid() || scale < 1) {
        std::fprintf(stderr, "rendersvg: cannot render %s\n", argv[1]);
        return 1;
    }
    QImage image(renderer.defaultSize() * scale, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    {
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        renderer.render(&painter);
    }
    if (!image.convertToFormat(QImage::Format_ARGB32).save(output, "PNG")) {
        std::fprintf(stderr, "rendersvg: cannot write %s\n", argv[2]);
        return 1;
    }
    return 0;
}
