#include "records/recordplan_p.h"

#include <QDebug>

namespace records {

namespace {

/// Prints a value, elements with commas between them.
struct Printer
{
    QDebug& debug;

    template<class T>
    void operator()(const T& member) const
    {
        debug << member;
    }
    void operator()(const TextMap& texts) const
    {
        debug << '{';
        QList<QString> keys = texts.keys();
        std::sort(keys.begin(), keys.end());
        const char* separator = "";
        for (const QString& key : std::as_const(keys))
            debug << std::exchange(separator, ", ") << key << ": " << texts.value(key);
        debug << '}';
    }
    void operator()(const RecordType& type, const void* record) const
    {
        printRecord(type, record, debug);
    }
    void operator()(const ListType& type, const void* list) const
    {
        debug << '[';
        const char* separator = "";
        type.forEach(list, [&](const void* element) {
            debug << std::exchange(separator, ", ");
            walk(type.element, element, *this);
        });
        debug << ']';
    }
};

/// Whether the value must not be printed. An empty text gives nothing away.
bool isHidden(const Field& field, const void* member)
{
    const bool isText = field.type.kind == RecordValueKind::Text;
    return field.isSecret() && !(isText && valueAt<QString>(member).isEmpty());
}

} // namespace

QDebug printRecord(const RecordType& type, const void* record, QDebug debug)
{
    const QDebugStateSaver saver(debug);
    debug.nospace() << type.name << '(';
    const char* separator = "";
    for (const Field& field : type.fields) {
        debug << std::exchange(separator, ", ") << field.key << ": ";
        const void* const member = field.in(record);
        if (isHidden(field, member))
            debug << "(hidden)";
        else
            walk(field.type, member, Printer{debug});
    }
    debug << ')';
    return debug;
}

} // namespace records
