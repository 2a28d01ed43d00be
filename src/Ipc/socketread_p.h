#ifndef IPC_SOCKETREAD_P_H
#define IPC_SOCKETREAD_P_H

#include <QByteArray>
#include <QLocalSocket>

/// All bytes that have arrived, read into `kept`, whose memory serves many reads:
/// QIODevice::readAll() takes 16 KiB anew for each message.
inline const QByteArray& readArrived(QLocalSocket* socket, QByteArray* kept)
{
    kept->reserve(1024); // Qt 5 frees what is resized to nothing and was not reserved
    kept->resize(static_cast<int>(qMax<qint64>(0, socket->bytesAvailable())));
    const qint64 size = socket->read(kept->data(), kept->size());
    kept->resize(static_cast<int>(qMax<qint64>(0, size)));
    return *kept;
}

/// Gives back the memory that a large read has taken. To be called when the read has been used.
inline void releaseLarge(QByteArray* kept)
{
    constexpr int kKeptCapacity = 64 * 1024;
    if (kept->capacity() > kKeptCapacity)
        *kept = QByteArray();
}

#endif
