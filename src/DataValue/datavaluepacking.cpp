// Values into packed trees and back.

#include "DataValue/datavalue_p.h"

#include <cstring>
#include <utility>

/// Packs the children of a container that is in step, and all below them.
class DataValuePacker
{
public:
    explicit DataValuePacker(PackedBuilder& builder)
        : m_builder(builder)
    {
    }

    /// False when there are comments, which a packed tree cannot hold; the containers around are
    /// marked, so that a copy of each does not look for them again.
    bool pack(DataValueTree::Container& root)
    {
        enter(root);
        while (!m_levels.empty()) {
            Level& level = m_levels.back();
            if (level.member == level.container->members.end() &&
                level.element == level.container->elements.size()) {
                m_builder.end(level.node,
                              level.container->members.size() + level.container->elements.size());
                m_levels.pop_back();
                continue;
            }
            if (level.element != level.container->elements.size()) {
                if (!add(level.container->elements[level.element++].value))
                    return markUnpackable();
                continue;
            }
            const DataValueMembers::Member& member = *level.member;
            ++level.member;
            m_builder.addText(member.key.view());
            if (!add(member.value))
                return markUnpackable();
        }
        return true;
    }

private:
    struct Level
    {
        DataValueTree::Container* container;
        std::size_t node;
        std::size_t element;
        DataValueMembers::Iterator member;
    };

    void enter(DataValueTree::Container& container)
    {
        container.covered = true;
        m_levels.push_back(
            {&container, m_builder.begin(container.owner->type()), 0, container.members.begin()});
    }

    bool markUnpackable()
    {
        for (const Level& level : m_levels)
            level.container->cannotPack = true;
        return false;
    }

    bool add(const CDataValue& value)
    {
        using Tree = DataValueTree;
        if (Tree::extras(value) && Tree::extras(value)->hasComments())
            return false;
        const ENUM_VALUE_TYPE kind = value.type();
        if (Tree::isOrdinary(kind)) {
            addContainer(value);
            return true;
        }
        if (kind == STRING_VALUE)
            m_builder.addText(Tree::text(value).view());
        else
            m_builder.addLeaf(Tree::leafNode(value));
        return kind == Tree::faceKind(value); // not so for an address, or a kind that is none
    }

    void addContainer(const CDataValue& value)
    {
        DataValueTree::Container* const container = DataValueTree::unpackedChildren(value);
        if (container && container->packed)
            m_builder.addCopy(*container->packed->root());
        else if (container)
            enter(*container);
        else
            m_builder.addCopy(*DataValueTree::packedNode(value));
    }

    PackedBuilder& m_builder;
    std::vector<Level> m_levels;
};

PackedNode DataValueTree::leafNode(const CDataValue& value)
{
    PackedNode node;
    node.nothing = 0;
    node.size = 1;
    node.kind = static_cast<std::uint8_t>(faceKind(value));
    switch (node.type()) {
    case INT_VALUE:
        node.signedNumber = signedNumber(value);
        break;
    case UINT_VALUE:
        node.unsignedNumber = unsignedNumber(value);
        break;
    case REAL_VALUE:
        node.real = real(value);
        break;
    case STRING_VALUE:
        node.text = text(value).c_str();
        node.size = static_cast<std::uint32_t>(text(value).view().size());
        break;
    case BOOLEAN_VALUE:
        node.flag = flag(value);
        break;
    default:
        break;
    }
    return node;
}

PackedBlock* DataValueTree::pack(Container& container)
{
    if (!container.packed) {
        PackedBuilder builder;
        if (DataValuePacker(builder).pack(container))
            container.packed = builder.finish();
    }
    return container.packed;
}

namespace {

/// Whether a part is so much of its block that a copy may keep the whole alive.
bool isWorthSharing(const PackedBlock& block, const PackedNode& node)
{
    constexpr std::size_t kPart = 4;
    constexpr std::size_t kFewBytes = 4096;
    if (&node == block.root())
        return true;
    if (node.size * kPart < block.root()->size)
        return false;
    if (block.textBytes() <= kFewBytes)
        return true;
    std::size_t bytes = 0;
    for (const PackedNode* text = &node; text != node.behind(); ++text)
        bytes += text->kind == STRING_VALUE ? text->size : 0;
    return bytes * kPart >= block.textBytes();
}

} // namespace

bool DataValueTree::copyPacked(CDataValue& to, const CDataValue& from)
{
    if (!isOrdinary(from.m_kind))
        return false;
    Container* const container = unpackedChildren(from);
    if (container) {
        const bool isEmpty = container->elements.empty() && container->members.empty();
        const bool isOther = container->outOfStep || container->mayHoldAddress;
        if (isEmpty || isOther || container->cannotPack)
            return false;
        PackedBlock* const block = pack(*container);
        if (!block)
            return false;
        constructPacked(to, *block, *block->root());
        return true;
    }
    PackedBlock& block = *from.m_payload.packed.block;
    const PackedNode& node = *from.m_payload.packed.node;
    if (isWorthSharing(block, node)) {
        constructPacked(to, block, node);
        return true;
    }
    PackedBuilder builder;
    builder.addCopy(node);
    return constructPacked(to, builder);
}

void DataValueTree::constructPacked(CDataValue& value, PackedBlock& block, const PackedNode& node)
{
    switch (node.type()) {
    case INT_VALUE:
        constructInt(value, node.signedNumber);
        break;
    case UINT_VALUE:
        constructUInt(value, node.unsignedNumber);
        break;
    case REAL_VALUE:
        constructReal(value, node.real);
        break;
    case STRING_VALUE:
        constructText(value, node.view());
        break;
    case BOOLEAN_VALUE:
        constructBool(value, node.flag);
        break;
    case ARRAY_VALUE:
    case MAP_VALUE:
        block.addReference();
        value.m_payload.packed = {&block, &node};
        value.m_packed = true;
        value.m_kind = node.type();
        break;
    default:
        break;
    }
}

bool DataValueTree::constructPacked(CDataValue& value, PackedBuilder& builder)
{
    PackedBlock* const block = builder.finish();
    if (!block)
        return false;
    constructPacked(value, *block, *block->root());
    block->dropReference(); // the builder's
    return true;
}

void DataValueTree::unpack(CDataValue& value)
{
    PackedBlock* const block = value.m_payload.packed.block;
    const PackedNode& packed = *value.m_payload.packed.node;
    const bool isMap = value.m_kind == MAP_VALUE;
    std::unique_ptr<Container> container(Container::create(value, isMap ? packed.count : 0));
    container->covered = value.m_holder && value.m_holder->covered;
    const PackedNode* node = &packed + 1;
    if (!isMap) {
        container->elements.reserve(packed.count);
        for (std::uint32_t i = 0; i < packed.count; ++i, node = node->behind())
            constructPacked(appendSlot(*container), *block, *node);
    } else {
        for (std::uint32_t i = 0; i < packed.count; ++i, node = node->behind()) {
            CDataValue& slot = container->members.append(DataValueText(node->view())).value;
            ++node;
            constructPacked(place(*container, slot), *block, *node);
        }
    }
    value.m_packed = false;
    value.m_payload.children = container.release();
    block->dropReference();
}

bool DataValueTree::equalNodes(const PackedNode& a, const PackedNode& b)
{
    if (a.size != b.size)
        return false;
    for (std::uint32_t i = 0; i < a.size; ++i) {
        const PackedNode& one = (&a)[i];
        const PackedNode& other = (&b)[i];
        if (one.kind != other.kind)
            return false;
        const bool equal = one.kind == REAL_VALUE      ? one.real == other.real
                           : one.kind == STRING_VALUE  ? one.view() == other.view()
                           : one.kind == BOOLEAN_VALUE ? one.flag == other.flag
                           : one.isContainer() ? one.count == other.count && one.size == other.size
                                               : one.signedNumber == other.signedNumber;
        if (!equal)
            return false;
    }
    return true;
}
