// Boost.JSON's document.

#include "records/recordpeers.h"

#include <boost/json.hpp>

namespace json = boost::json;

namespace recordpeers {

std::string BoostJson::write(const BLSmsGetListCnf& list)
{
    json::array items;
    items.reserve(list.listSmsItem.size());
    for (const BLSmsListItem& item : list.listSmsItem) {
        json::object object;
        object.reserve(std::size(kNumbers) + std::size(kTexts));
        for (const NumberField& field : kNumbers)
            object.emplace(field.key, item.*field.member);
        for (const TextField& field : kTexts) {
            const QByteArray utf8 = (item.*field.member).toUtf8();
            object.emplace(field.key, json::string_view(utf8.constData(),
                                                        static_cast<std::size_t>(utf8.size())));
        }
        items.emplace_back(std::move(object));
    }
    json::object root;
    root.emplace(kList, std::move(items));
    return json::serialize(root);
}

BLSmsGetListCnf BoostJson::read(const std::string& text)
{
    json::monotonic_resource memory;
    const json::value root = json::parse(text, &memory);
    BLSmsGetListCnf list;
    for (const json::value& element : root.as_object().at(kList).as_array()) {
        const json::object& object = element.as_object();
        BLSmsListItem& item = list.listSmsItem.emplace_back();
        for (const NumberField& field : kNumbers)
            item.*field.member = static_cast<int>(object.at(field.key).as_int64());
        for (const TextField& field : kTexts) {
            const json::string& value = object.at(field.key).as_string();
            item.*field.member = QString::fromUtf8(value.data(), static_cast<int>(value.size()));
        }
    }
    return list;
}

} // namespace recordpeers
