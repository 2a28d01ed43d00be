#include "records/recordcatalogue.h"

#include "records/recordplan_p.h"

using namespace records;

static RecordFieldInfo describe(const Field& field)
{
    const ValueType& type = field.type;
    const ValueType& innermost = type.kind == RecordValueKind::List ? type.list->element : type;
    const bool isRecord = innermost.kind == RecordValueKind::Record;
    return {field.key,
            field.meaning,
            type.kind,
            innermost.kind,
            isRecord ? innermost.record->name : nullptr,
            field.isSecret()};
}

static std::vector<RecordInfo> describeAllRecords()
{
    std::vector<RecordInfo> all;
    for (const RecordType* type : allRecords()) {
        all.push_back({type->name, type->meaning, type->header, {}});
        std::transform(type->fields.begin(), type->fields.end(),
                       std::back_inserter(all.back().fields), describe);
    }
    return all;
}

const std::vector<RecordInfo>& recordCatalogue()
{
    static const std::vector<RecordInfo> catalogue = describeAllRecords();
    return catalogue;
}

QStringList secretRecordKeys()
{
    QStringList keys;
    for (const RecordInfo& record : recordCatalogue()) {
        for (const RecordFieldInfo& field : record.fields) {
            if (field.secret)
                keys << QString::fromLatin1(field.key);
        }
    }
    keys.removeDuplicates();
    return keys;
}
