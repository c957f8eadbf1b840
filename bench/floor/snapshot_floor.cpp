// The least any snapshot list can do: list a directory's images and read each one's header.
// Prints the median of several passes in seconds, for bench/snapshots.py to hold the browser
// against.
//
//     snapshot_floor DIRECTORY [REPEAT]

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QImageReader>
#include <QSize>

#include <algorithm>
#include <cstdio>
#include <vector>

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    if (argc < 2) {
        std::fprintf(stderr, "usage: snapshot_floor DIRECTORY [REPEAT]\n");
        return 2;
    }
    const QString directory = QString::fromLocal8Bit(argv[1]);
    const int repeat = argc > 2 ? std::max(1, std::atoi(argv[2])) : 5;
    std::vector<double> seconds;
    long long area = 0;
    for (int pass = 0; pass < repeat; ++pass) {
        QElapsedTimer timer;
        timer.start();
        const QDir dir(directory);
        for (const QString& name : dir.entryList({QStringLiteral("*.jpg")}, QDir::Files)) {
            const QSize size = QImageReader(dir.filePath(name)).size();
            area += size.width();
        }
        seconds.push_back(timer.nsecsElapsed() / 1e9);
    }
    std::sort(seconds.begin(), seconds.end());
    std::printf("%.6f %lld\n", seconds[seconds.size() / 2], area);
    return 0;
}
