// Values into packed trees and back.

#include "DataValue/core/cursor_p.h"
#include "DataValue/core/tree_p.h"

#include <memory>

namespace {

using Tree = DataValueTree;

struct DropReference
{
    void operator()(PackedBlock* block) const { block->dropReference(); }
};

/// Adds the value that the cursor stands at: all of one that is packed, of an unpacked container
/// the beginning.
void addValue(PackedBuilder& builder, ValueCursor& at)
{
    const PackedNode& node = at.node();
    if (node.isContainer() && at.packedNode()) {
        builder.addCopy(at.packedBlock(), node);
        at.skip();
    } else if (node.isContainer()) {
        builder.begin(node.type());
        if (!at.mayEnter())
            builder.end(0);
    } else if (node.kind == STRING_VALUE) {
        builder.addText(at.text());
    } else {
        builder.addLeaf(node);
    }
}

/// Adds a whole tree, but not the comments of its root.
void addTree(PackedBuilder& builder, const CDataValue& root, ValueCursor::Which which)
{
    ValueCursor at(root, which);
    do {
        if (at.isEnd()) {
            builder.end(at.node().count);
            continue;
        }
        if (at.isMember())
            builder.addText(at.key());
        if (at.depth() != 0 && at.hasComments()) {
            for (const CommentPlace place : kCommentPlaces)
                builder.addComment(place, at.comment(place));
        }
        addValue(builder, at);
    } while (at.next());
}

/// Whether a part is so much of its block that a copy may keep the whole alive.
bool isWorthSharing(const PackedBlock& block, const PackedNode& node)
{
    constexpr std::size_t kPart = 4;
    constexpr std::size_t kFewBytes = 4096;
    if (&node == block.root())
        return true;
    if (node.size * kPart < block.root()->size || block.hasComments())
        return false;
    if (block.textBytes() <= kFewBytes)
        return true;
    std::size_t bytes = 0;
    for (const PackedNode* text = &node; text != node.behind(); ++text)
        bytes += text->kind == STRING_VALUE ? text->size : 0;
    return bytes * kPart >= block.textBytes();
}

} // namespace

PackedNode DataValueTree::node(const CDataValue& value)
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
    case ARRAY_VALUE:
    case MAP_VALUE:
        node.count = count(*unpacked(value));
        break;
    default:
        break;
    }
    return node;
}

void DataValueTree::copyPart(CDataValue& to, PackedBlock& block, const PackedNode& node)
{
    if (!node.isContainer() || isWorthSharing(block, node)) {
        constructPacked(to, block, node);
        return;
    }
    PackedBuilder builder;
    builder.addCopy(block, node);
    constructPacked(to, builder);
    takeComments(to, block, node);
}

bool DataValueTree::copyPacked(CDataValue& to, const CDataValue& from, Copy what)
{
    if (from.m_packed) {
        copyPart(to, *packedBlock(from), *packedNode(from));
        return true;
    }
    PackedBuilder builder;
    addTree(builder, from, what == Copy::Face ? ValueCursor::Shown : ValueCursor::Held);
    return constructPacked(to, builder);
}

void DataValueTree::takeComments(CDataValue& value, const PackedBlock& block,
                                 const PackedNode& node)
{
    for (const PackedComment& comment : block.comments(&node, &node + 1))
        makeExtras(value).comments[static_cast<std::size_t>(comment.place)] = comment.text;
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
    if (block.hasComments())
        takeComments(value, block, node);
}

bool DataValueTree::constructPacked(CDataValue& value, PackedBuilder& builder)
{
    // To construct the value may fail, and the builder's reference has to go all the same.
    const std::unique_ptr<PackedBlock, DropReference> block(builder.finish());
    if (!block)
        return false;
    constructPacked(value, *block, *block->root());
    return true;
}

void DataValueTree::unpack(CDataValue& value)
{
    PackedBlock* const block = value.m_payload.packed.block;
    const PackedNode& packed = *value.m_payload.packed.node;
    const bool isMap = value.m_kind == MAP_VALUE;
    std::unique_ptr<Container> container(Container::create(value, isMap ? packed.count : 0));
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
