// RapidJSON without a document: what a user writes who wants the shortest way.

#include "records/recordpeers.h"

#include <algorithm>
#include <iterator>
#include <string_view>

// As this library compiles it for itself.
#ifdef __SSE2__
#define RAPIDJSON_SSE2
#endif
#include <rapidjson/reader.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

namespace recordpeers {

namespace {

/// Fills a list from the events of a text in the order of write(): a field is first sought where
/// it is expected, behind the one before.
class ListHandler : public rapidjson::BaseReaderHandler<rapidjson::UTF8<>, ListHandler>
{
public:
    explicit ListHandler(BLSmsGetListCnf& list)
        : m_list(list)
    {
    }

    bool StartObject()
    {
        if (++m_depth == 2) {
            m_item = &m_list.listSmsItem.emplace_back();
            m_nextNumber = 0;
            m_nextText = 0;
        }
        return m_depth <= 2;
    }
    bool EndObject(rapidjson::SizeType)
    {
        --m_depth;
        return true;
    }
    bool Key(const char* text, rapidjson::SizeType size, bool)
    {
        const std::string_view key(text, size);
        m_number = nullptr;
        m_text = nullptr;
        if (m_depth == 1)
            return key == kList;
        m_number = find(kNumbers, m_nextNumber, key);
        if (!m_number)
            m_text = find(kTexts, m_nextText, key);
        return true;
    }
    bool Int(int number)
    {
        if (m_number)
            m_item->*m_number->member = number;
        return true;
    }
    bool Uint(unsigned number) { return Int(static_cast<int>(number)); }
    bool String(const char* text, rapidjson::SizeType size, bool)
    {
        if (m_text)
            m_item->*m_text->member = QString::fromUtf8(text, static_cast<int>(size));
        return true;
    }

private:
    template<typename Field, std::size_t N>
    static const Field* find(const Field (&fields)[N], std::size_t& next, std::string_view key)
    {
        for (std::size_t tried = 0; tried < N; ++tried) {
            const Field& field = fields[next];
            next = next + 1 == N ? 0 : next + 1;
            if (key == field.key)
                return &field;
        }
        return nullptr;
    }

    BLSmsGetListCnf& m_list;
    BLSmsListItem* m_item = nullptr;
    const NumberField* m_number = nullptr;
    const TextField* m_text = nullptr;
    std::size_t m_nextNumber = 0;
    std::size_t m_nextText = 0;
    int m_depth = 0;
};

void writeTo(rapidjson::StringBuffer& buffer, const BLSmsGetListCnf& list)
{
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    writer.StartObject();
    writer.Key(kList);
    writer.StartArray();
    for (const BLSmsListItem& item : list.listSmsItem) {
        writer.StartObject();
        for (const NumberField& field : kNumbers) {
            writer.Key(field.key);
            writer.Int(item.*field.member);
        }
        for (const TextField& field : kTexts) {
            const QByteArray utf8 = (item.*field.member).toUtf8();
            writer.Key(field.key);
            writer.String(utf8.constData(), static_cast<rapidjson::SizeType>(utf8.size()));
        }
        writer.EndObject();
    }
    writer.EndArray();
    writer.EndObject();
}

BLSmsGetListCnf readFrom(const char* text)
{
    BLSmsGetListCnf list;
    ListHandler handler(list);
    rapidjson::StringStream stream(text);
    rapidjson::Reader().Parse(stream, handler);
    return list;
}

} // namespace

std::string RapidJsonSax::write(const BLSmsGetListCnf& list)
{
    rapidjson::StringBuffer buffer;
    writeTo(buffer, list);
    return std::string(buffer.GetString(), buffer.GetSize());
}

BLSmsGetListCnf RapidJsonSax::read(const std::string& text)
{
    return readFrom(text.c_str());
}

QString RapidJsonSaxQString::write(const BLSmsGetListCnf& list)
{
    rapidjson::StringBuffer buffer;
    writeTo(buffer, list);
    return QString::fromUtf8(buffer.GetString(), static_cast<int>(buffer.GetSize()));
}

BLSmsGetListCnf RapidJsonSaxQString::read(const QString& text)
{
    return readFrom(text.toUtf8().constData());
}

} // namespace recordpeers
