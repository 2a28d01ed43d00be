#ifndef DATAVALUE_CORE_CURSOR_P_H
#define DATAVALUE_CORE_CURSOR_P_H

#include "DataValue/core/tree_p.h"

#include <QVarLengthArray>

/// A read-only walk over a value and all below it, in the order of the text, for packed and
/// unpacked values alike. It changes nothing, so several may walk one value in several threads.
///
///     ValueCursor at(value);
///     do {
///         if (at.isEnd())
///             ... // behind the last child of a container that is not empty
///         else
///             ... // at a value: at.node() says which, at.key() under which name
///     } while (at.next());
///
/// It keeps its own stack, so that no depth exhausts the thread's. The value must not change while
/// it walks.
class ValueCursor
{
public:
    /// Which tree it walks.
    enum Which {
        Shown, ///< what the text shows: stored mirrors count, addresses are null
        Held   ///< the children themselves; address containers are not entered
    };

    explicit ValueCursor(const CDataValue& root, Which which = Shown)
        : m_which(which)
    {
        m_levels.append(Level());
        m_level = m_levels.data();
        stand(root);
    }
    /// A walk over the value that another one stands at.
    enum Here { HereOnly };
    ValueCursor(const ValueCursor& other, Here);
    ValueCursor(const ValueCursor&) = delete;
    ValueCursor& operator=(const ValueCursor&) = delete;

    /// Goes to the next place; false when there is none.
    bool next()
    {
        if (m_mayEnter)
            enter();
        Level& level = *m_level;
        if (level.left == 0)
            return leave();
        --level.left;
        m_isEnd = false;
        if (level.container) {
            standInContainer(level);
            return true;
        }
        if (level.isMap) {
            m_key = m_behind->view();
            ++m_behind;
        }
        m_node = m_behind++;
        m_mayEnter = m_node->isContainer() && m_node->count != 0;
        return true;
    }
    /// Leaves out what is in the container that it stands at.
    void skip()
    {
        m_mayEnter = false;
        m_behind = m_node->behind();
    }

    /// Whether it stands behind the children of a container rather than at a value. What follows
    /// tells of that container then, its key excepted.
    bool isEnd() const { return m_isEnd; }
    /// The kind and content of a scalar, the kind and count of a container. Lasts until the next
    /// step.
    const PackedNode& node() const { return *m_node; }
    /// The bytes of a string, which last as long as the value.
    std::string_view text() const
    {
        return packedNode() ? m_node->view() : DataValueTree::text(*m_value).view();
    }
    ENUM_VALUE_TYPE kind() const { return m_node->type(); }
    /// Whether it stands at a container that is not empty, so that the next place is in it.
    bool mayEnter() const { return m_mayEnter; }
    /// Whether the value is a member of a map, and its key.
    bool isMember() const { return m_level->isMap; }
    std::string_view key() const { return m_key; }
    /// The number of containers around the value.
    std::size_t depth() const { return static_cast<std::size_t>(m_levels.size()) - 1; }
    /// Whether no child of the same container follows.
    bool isLast() const { return m_level->left == 0; }

    /// The value itself, null for one inside a packed tree.
    const CDataValue* value() const { return m_value; }
    /// The value's place when it is, or is part of, a packed container; else null.
    const PackedNode* packedNode() const { return m_node != &m_unpacked ? m_node : nullptr; }
    PackedBlock& packedBlock() const { return *m_block; }
    /// Fills `to`, a null value, with a copy of what it stands at.
    void copyTo(CDataValue& to) const;

    bool hasComments() const;
    /// Empty when there is none.
    std::string_view comment(CommentPlace place) const;

private:
    struct Level
    {
        const DataValueTree::Container* container = nullptr; // null inside a packed tree
        const CDataValue* value = nullptr;  // null for a value inside a packed tree
        const PackedNode* packed = nullptr; // null for an unpacked container
        DataValueMembers::Iterator member;
        const DataValueElement* element = nullptr;
        std::uint32_t left = 0; // children that are still to come
        bool isMap = false;
    };
    static constexpr int kUsualDepth = 8;

    void stand(const CDataValue& value);
    void standInContainer(Level& level);
    void enter();
    bool leave();

    const Which m_which;
    bool m_isEnd = false;
    bool m_mayEnter = false;
    const CDataValue* m_value = nullptr;
    const PackedNode* m_node = nullptr;
    const PackedNode* m_behind = nullptr; // the next node of the packed tree that it walks
    PackedBlock* m_block = nullptr;       // that tree's
    PackedNode m_unpacked;                // what m_node is when the value is not packed
    std::string_view m_key;
    QVarLengthArray<Level, kUsualDepth> m_levels; // the first is around the root
    Level* m_level = nullptr;                     // the last
};

#endif
