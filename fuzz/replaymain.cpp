// Replays fuzz inputs through a fuzz target's entry function, built with the normal
// compiler: every file named, and every file of every folder named, in name order.
// Used by the tests to keep the committed crash inputs and seeds passing.

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringList>

#include <cstdint>
#include <cstdio>

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv);
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);
// Defined by targets that must take down what they made (Qt's GUI) before exit.
extern "C" __attribute__((weak)) void orvexFuzzTearDown();

int main(int argc, char* argv[])
{
    QStringList files;
    for (int i = 1; i < argc; ++i) {
        const QFileInfo info(QString::fromLocal8Bit(argv[i]));
        if (info.isDir()) {
            const QDir dir(info.filePath());
            for (const QString& name : dir.entryList(QDir::Files, QDir::Name))
                files.append(dir.filePath(name));
        } else {
            files.append(info.filePath());
        }
    }
    if (files.isEmpty()) {
        std::fprintf(stderr, "no inputs to replay\n");
        return 1;
    }
    LLVMFuzzerInitialize(&argc, &argv);
    for (const QString& path : files) {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly)) {
            std::fprintf(stderr, "cannot read %s\n", qPrintable(path));
            return 1;
        }
        const QByteArray bytes = file.readAll();
        std::printf("%s (%d bytes)\n", qPrintable(path), int(bytes.size()));
        std::fflush(stdout);
        LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.constData()),
                               size_t(bytes.size()));
    }
    if (orvexFuzzTearDown)
        orvexFuzzTearDown();
    std::printf("replayed %d inputs\n", int(files.size()));
    return 0;
}
