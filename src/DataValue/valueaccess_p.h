#ifndef DATAVALUE_VALUEACCESS_P_H
#define DATAVALUE_VALUEACCESS_P_H

#include "DataValue/core/packed_p.h"
#include "DataValue/core/tree_p.h"
#include "DataValue/json/jsontext_p.h"

/// All that messages, records and routing may see of the inside of values: packed trees, and the
/// bytes of texts. Everything else in `core/` and `json/` is the value's own.
namespace ValueAccess {

/// The node that a packed container refers to, and its block; null for every other value.
inline const PackedNode* packedNode(const CDataValue& value)
{
    return DataValueTree::packedNode(value);
}
inline PackedBlock* packedBlock(const CDataValue& value)
{
    return DataValueTree::packedBlock(value);
}

/// Makes a null value the value of a node. A container takes a reference to the block.
inline void constructPacked(CDataValue& value, PackedBlock& block, const PackedNode& node)
{
    DataValueTree::constructPacked(value, block, node);
}
/// Makes a null value the root of what the builder has made; false when that is too large.
inline bool constructPacked(CDataValue& value, PackedBuilder& builder)
{
    return DataValueTree::constructPacked(value, builder);
}

/// Whether `inner` lies anywhere below `outer`.
inline bool isBelow(const CDataValue& inner, const CDataValue& outer)
{
    return DataValueTree::isBelow(inner, outer);
}

/// The bytes of a string up to its end, which is a zero byte; null for every other value.
inline const char* text(const CDataValue& value)
{
    return value.isString() ? DataValueTree::text(value).c_str() : nullptr;
}

/// Parses JSON text in UTF-8 into `value`. False, with `value` unchanged, on any syntax error.
inline bool parse(std::string_view utf8, CDataValue& value)
{
    return JsonText::parse(utf8, value);
}

} // namespace ValueAccess

#endif
