// Reads of one connection: cut as the plainest form of the rules says. The first byte chooses the
// markers; then, for each read, a byte with its length and its bytes.

#include "fuzztarget.h"

#include "Ipc/messageframe_p.h"
#include "Ipc/plainreceiver.h"

#include <QStringList>

#include <algorithm>
#include <iterator>

namespace {

constexpr const char* kMarkers[][2] = {{"__BEGIN__", "__END__"},
                                       {"a", "b"},
                                       {"ab", "ba"},
                                       {"aa", "a"},
                                       {"a", "aa"},
                                       {"a", "a"},
                                       {"aba", "ab"},
                                       {"_", "__"},
                                       {"\xc3\xa9", "\xe2\x82\xac"}};

/// Whether the bytes are the beginning of a character, and more would make it whole.
bool isBegun(const QByteArray& bytes)
{
    const auto at = [&](int index) { return static_cast<unsigned char>(bytes.at(index)); };
    const auto isNext = [&](int index) { return (at(index) & 0xC0) == 0x80; };
    const int lead = at(0);
    const int needed = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || bytes.size() >= needed)
        return false;
    for (int i = 1; i < bytes.size(); ++i) {
        if (!isNext(i))
            return false;
    }
    if (bytes.size() == 1)
        return true;
    const int second = at(1);
    return !(lead == 0xE0 && second < 0xA0) && !(lead == 0xED && second > 0x9F) &&
           !(lead == 0xF0 && second < 0x90) && !(lead == 0xF4 && second > 0x8F);
}

/// The text of each read, with the beginning of a character kept for the next one.
class PlainDecoder
{
public:
    QString decode(const QByteArray& read)
    {
        QByteArray bytes = m_heldBack + read;
        m_heldBack.clear();
        const int zero = static_cast<int>(bytes.indexOf('\0'));
        if (zero >= 0)
            bytes.truncate(zero);
        for (int count = 1; zero < 0 && count <= std::min<int>(3, bytes.size()); ++count) {
            if (isBegun(bytes.right(count)))
                m_heldBack = bytes.right(count);
        }
        bytes.chop(static_cast<int>(m_heldBack.size()));
        // A letter in front keeps a first U+FEFF from being taken for a byte-order mark.
        return QString::fromUtf8("x" + bytes).mid(1);
    }

private:
    QByteArray m_heldBack;
};

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    const auto& markers = kMarkers[data[0] % std::size(kMarkers)];
    const QString head = QString::fromUtf8(markers[0]);
    const QString end = QString::fromUtf8(markers[1]);
    MessageFrame frame(head, end);
    PlainReceiver plain{head, end, QString()};
    PlainDecoder decoder;
    for (std::size_t at = 1; at < size;) {
        const std::size_t length = std::min<std::size_t>(data[at], size - at - 1);
        const QByteArray read = bytesOf(data + at + 1, length);
        at += 1 + length;
        QStringList expected;
        plain.read(decoder.decode(read), [&](const QString& body) { expected << body; });
        QStringList bodies;
        QString body;
        frame.append(read);
        while (frame.next(body) == MessageFrame::Body)
            bodies << body;
        require(bodies == expected, "the bodies are those of the plain rules");
        require(frame.buffer() == plain.buffer, "what is kept is that of the plain rules");
    }
    return 0;
}
