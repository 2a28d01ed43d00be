#ifndef TESTS_DATAVALUE_RANDOMWORLD_H
#define TESTS_DATAVALUE_RANDOMWORLD_H

#include "randomjson.h"
#include "referencemodel.h"

#include <array>
#include <list>
#include <string>
#include <vector>

/// A CDataValue and the model of what it has to be.
struct ValuePair
{
    CDataValue real;
    ModelValue model;
};

/// A node of some tree, in both worlds.
struct NodePair
{
    enum Place { PoolRoot, Child, Temporary, SharedNull };

    CDataValue* real = nullptr;
    ModelValue* model = nullptr;
    Place place = PoolRoot;
    std::string name;
};

/// A pool of values in both worlds, to which random operations are applied.
///
/// A step is a seed: it decides, from the state that it finds, what is done. So a sequence of
/// steps can be run again, also with steps left out, which is how a failure is shortened.
///
/// After most steps only what `const` operations say is compared, which leaves the values in the
/// form that they are in: packed or not, shared or not. Comparing every value that a reference can
/// be had of unpacks them all, and is done after few steps.
class RandomWorld
{
public:
    /// How large a tree may grow before it is thrown away.
    enum Size : size_t {
        Small = 40,  ///< a step stays cheap
        Large = 1000 ///< maps have several pages of members
    };

    explicit RandomWorld(Size largestTree);

    /// Applies one step to both worlds and compares them. Returns false when they differ;
    /// mismatch() then says in what.
    bool run(quint32 step);
    const std::string& mismatch() const { return m_mismatch; }
    /// What the latest step did.
    const std::string& description() const { return m_description; }

private:
    using Operation = void (RandomWorld::*)(NodePair& node);
    struct NamedOperation
    {
        const char* name;
        Operation apply;
    };

    const NamedOperation& pickOperation();
    NodePair pickNode();
    bool descend(NodePair& node);
    NodePair pickValue();
    void fillArgument();
    std::string pickKey();
    unsigned int pickIndex(const NodePair& node);
    int pickCount();
    bool pickFlag();

    void assign(NodePair& node);
    void moveAssign(NodePair& node);
    void swapValues(NodePair& node);
    void clearValue(NodePair& node);
    void copyOut(NodePair& node);
    void parseText(NodePair& node);
    void compareTwo(NodePair& node);
    void mapSet(NodePair& node);
    void mapSetMoved(NodePair& node);
    void mapGet(NodePair& node);
    void mapRemove(NodePair& node);
    void mapFind(NodePair& node);
    void mapFindNode(NodePair& node);
    void findStep(NodePair& node);
    void arrayAppend(NodePair& node);
    void arrayAppendMoved(NodePair& node);
    void arrayInsert(NodePair& node);
    void arrayModify(NodePair& node);
    void arrayGet(NodePair& node);
    void arrayRemove(NodePair& node);
    void addressMapSet(NodePair& node);
    void addressMapGet(NodePair& node);
    void addressMapRemove(NodePair& node);
    void addressMapFind(NodePair& node);
    void addressMapFindNode(NodePair& node);
    void addressArrayAppend(NodePair& node);
    void addressArrayInsert(NodePair& node);
    void addressArrayModify(NodePair& node);
    void addressArrayGet(NodePair& node);
    void addressArrayRemove(NodePair& node);
    void parseOwnText(NodePair& node);
    void copyPool(NodePair& node);
    void compareAlmostEqual(NodePair& node);
    void fillMap(NodePair& node);
    void removeMany(NodePair& node);
    void synchJsonData(NodePair& node);
    void synchPreDataPoint(NodePair& node);
    void synPreDataValue(NodePair& node);

    void note(const std::string& text) { m_description += ", " + text; }

    template<typename Call>
    decltype(auto) byKey(const std::string& key, Call call);
    template<typename ModelCall>
    bool allowed(ModelCall modelCall);
    template<typename RealCall, typename ModelCall>
    void callForNode(RealCall realCall, ModelCall modelCall);
    template<typename RealCall, typename ModelCall>
    void callForValue(RealCall realCall, ModelCall modelCall);
    template<typename RealCall, typename ModelCall>
    void callForList(RealCall realCall, ModelCall modelCall);
    void keep(CDataValue& real, const ModelValue& model);

    template<typename T>
    void expectSame(const std::string& what, const T& real, const T& model);
    void expectSameNode(const std::string& what, CDataValue& real, ModelValue& model);
    void compare(const std::string& name, CDataValue& real, ModelValue& model);
    void compareTexts(const std::string& name, const CDataValue& real, const ModelValue& model);
    void compareTrees(const std::string& name, CDataValue& real, ModelValue& model);
    void compareScalars(const std::string& name, const CDataValue& real, const ModelValue& model);
    void compareMap(const std::string& name, CDataValue& real, ModelValue& model);
    void compareArray(const std::string& name, CDataValue& real, ModelValue& model);
    void compareAddressContainer(const std::string& name, CDataValue& real, ModelValue& model);

    static const std::vector<NamedOperation>& operations() { return kOperations; }
    static const std::vector<NamedOperation> kOperations;
    static const std::vector<NamedOperation>& bulkOperations();

    const size_t m_largestTree;
    Dice m_dice{0};
    bool m_looksDeeply = false;
    std::array<ValuePair, 4> m_pool;
    ValuePair m_argument;
    bool m_mayKeep = false;
    std::string m_description;
    std::string m_mismatch;
};

inline std::string printable(const std::string& text)
{
    return text;
}

inline std::string printable(const void* address)
{
    return address ? "an address" : "no address";
}

inline std::string printable(const std::vector<std::string>& keys)
{
    std::string text;
    for (const std::string& key : keys)
        text += "\"" + key + "\" ";
    return text;
}

template<typename Number>
std::string printable(Number number)
{
    return std::to_string(number);
}

template<typename T>
void RandomWorld::expectSame(const std::string& what, const T& real, const T& model)
{
    if (m_mismatch.empty() && !(real == model))
        m_mismatch =
            what + "\n  is        " + printable(real) + "\n  should be " + printable(model);
}

#endif
