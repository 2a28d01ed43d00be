#include "DataValue/core/cursor_p.h"

using Tree = DataValueTree;

ValueCursor::ValueCursor(const ValueCursor& other, Here)
    : m_which(other.m_which)
    , m_mayEnter(other.m_mayEnter)
    , m_value(other.m_value)
    , m_node(other.packedNode())
    , m_behind(other.m_behind)
    , m_block(other.m_block)
    , m_unpacked(other.m_unpacked)
{
    if (!m_node)
        m_node = &m_unpacked;
    m_levels.append(Level());
    m_level = m_levels.data();
}

void ValueCursor::stand(const CDataValue& value)
{
    m_value = m_which == Shown ? &Tree::face(value) : &value;
    m_node = Tree::packedNode(*m_value);
    if (m_node) {
        m_block = Tree::packedBlock(*m_value);
        m_behind = m_node + 1;
    } else {
        m_unpacked = Tree::node(*m_value);
        m_node = &m_unpacked;
    }
    m_mayEnter = m_node->isContainer() && m_node->count != 0;
}

void ValueCursor::standInContainer(Level& level)
{
    if (!level.isMap) {
        stand(level.element++->value);
        return;
    }
    m_key = level.member->key.view();
    stand(level.member->value);
    ++level.member;
}

void ValueCursor::enter()
{
    Level level;
    level.value = m_value;
    level.packed = packedNode();
    level.left = m_node->count;
    level.isMap = m_node->kind == MAP_VALUE;
    if (!level.packed) {
        level.container = Tree::unpacked(*m_value);
        level.member = level.container->members.begin();
        level.element = level.container->elements.data();
    }
    m_value = nullptr;
    m_levels.append(level);
    m_level = &m_levels.last();
}

bool ValueCursor::leave()
{
    if (m_levels.size() == 1)
        return false;
    m_value = m_level->value;
    m_node = m_level->packed;
    if (!m_node) {
        m_unpacked = Tree::node(*m_value);
        m_node = &m_unpacked;
    }
    m_levels.removeLast();
    m_level = &m_levels.last();
    m_isEnd = true;
    m_mayEnter = false;
    return true;
}

void ValueCursor::copyTo(CDataValue& to) const
{
    if (m_value)
        Tree::copy(to, *m_value, m_which == Shown ? Tree::Copy::Face : Tree::Copy::Whole);
    else
        Tree::copyPart(to, *m_block, *m_node);
}

bool ValueCursor::hasComments() const
{
    if (m_value)
        return Tree::extras(*m_value) && Tree::extras(*m_value)->hasComments();
    if (!m_block->hasComments())
        return false;
    const PackedBlock::Comments comments = m_block->comments(m_node, m_node + 1);
    return comments.begin() != comments.end();
}

std::string_view ValueCursor::comment(CommentPlace place) const
{
    if (m_value) {
        const Tree::Extras* const extras = Tree::extras(*m_value);
        return extras ? extras->comments[static_cast<std::size_t>(place)].view()
                      : std::string_view();
    }
    if (!m_block->hasComments())
        return {};
    for (const PackedComment& comment : m_block->comments(m_node, m_node + 1)) {
        if (comment.place == place)
            return comment.text.view();
    }
    return {};
}
