// What it costs to cut one message of 16 MiB out of reads of 4 KiB, beside what it costs only to
// append the same reads to a text, decoded before or while appending. The cost per byte must not
// grow with the message: see the sizes.
#include "Ipc/messageframe_p.h"

#include <benchmark/benchmark.h>

#include <vector>

namespace {

constexpr int readSize = 4096;

// Text like that of an envelope; with `ascii` off, every fourth character is another.
QByteArray frameOf(qint64 size, bool ascii)
{
    QByteArray bytes("__BEGIN__");
    bytes.reserve(int(size) + 64);
    const QByteArray unit = ascii ? QByteArray("{\"nIndex\":3,\"strNumber\":\"12\"},")
                                  : QByteArray("{\"a\":\"\xC3\xA9\xE2\x82\xAC\xE4\xB8\xAD\"},");
    while (bytes.size() + unit.size() + 7 <= size)
        bytes += unit;
    return bytes + "__END__";
}

std::vector<QByteArray> readsOf(const QByteArray& bytes)
{
    std::vector<QByteArray> reads;
    for (int at = 0; at < bytes.size(); at += readSize)
        reads.push_back(bytes.mid(at, readSize));
    return reads;
}

std::vector<QByteArray> readsFor(const benchmark::State& state)
{
    return readsOf(frameOf(state.range(0), state.range(1) != 0));
}

void appendDecoded(benchmark::State& state)
{
    std::vector<QString> texts;
    for (const QByteArray& read : readsFor(state))
        texts.push_back(QString::fromUtf8(read));
    for (auto _ : state) {
        QString buffer;
        for (const QString& text : texts)
            buffer.append(text);
        benchmark::DoNotOptimize(buffer.constData());
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

void decodeAndAppend(benchmark::State& state)
{
    const std::vector<QByteArray> reads = readsFor(state);
    for (auto _ : state) {
        QString buffer;
        for (const QByteArray& read : reads)
            buffer.append(QString::fromUtf8(read));
        benchmark::DoNotOptimize(buffer.constData());
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

void cutOut(benchmark::State& state)
{
    const std::vector<QByteArray> reads = readsFor(state);
    for (auto _ : state) {
        MessageFrame frame;
        QString body;
        int bodies = 0;
        for (const QByteArray& read : reads) {
            frame.append(read);
            while (frame.next(body) == MessageFrame::Body)
                ++bodies;
        }
        if (bodies != 1)
            state.SkipWithError("not one message");
        benchmark::DoNotOptimize(body.constData());
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

void smallFramesInOneRead(benchmark::State& state)
{
    const QByteArray bytes = QByteArray("__BEGIN__{\"n\":1}\n__END__").repeated(1 << 16);
    for (auto _ : state) {
        MessageFrame frame;
        QString body;
        frame.append(bytes);
        while (frame.next(body) == MessageFrame::Body)
            benchmark::DoNotOptimize(body.constData());
    }
    state.SetItemsProcessed(state.iterations() * (1 << 16));
}

void sizes(benchmark::internal::Benchmark* benchmark)
{
    benchmark->ArgNames({"bytes", "ascii"})->Unit(benchmark::kMillisecond);
    for (const int ascii : {1, 0}) {
        for (const int size : {1 << 20, 4 << 20, 16 << 20})
            benchmark->Args({size, ascii});
    }
}

BENCHMARK(appendDecoded)->Apply(sizes);
BENCHMARK(decodeAndAppend)->Apply(sizes);
BENCHMARK(cutOut)->Apply(sizes);
BENCHMARK(smallFramesInOneRead)->Unit(benchmark::kMillisecond);

} // namespace
