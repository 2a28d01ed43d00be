#ifndef TESTS_IPC_PLAINRECEIVER_H
#define TESTS_IPC_PLAINRECEIVER_H

#include <QString>

#include <functional>

/// The rules of receiving, written down as simply as possible and without a thought for cost.
struct PlainReceiver
{
    using Deliver = std::function<void(const QString& body)>;

    QString head;
    QString end;
    QString buffer;

    QString read(const QString& text, const Deliver& deliver)
    {
        buffer += text;
        int origin = 0;
        do {
            const int headAt = int(buffer.indexOf(head, origin));
            origin = headAt;
            const int endAt = int(buffer.indexOf(end, 0));
            if (headAt < 0)
                return "no head";
            if (endAt < 0)
                return "no end";
            const int start = headAt + int(head.size());
            const int length = endAt - headAt - int(head.size());
            const QString body = length < 0 ? buffer.mid(start) : buffer.mid(start, length);
            buffer = buffer.right(buffer.size() - endAt - end.size());
            deliver(body);
        } while (buffer.indexOf(end, 0) >= 0);
        return "done";
    }
};

#endif
