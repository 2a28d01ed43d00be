#include "randomworld.h"

#include <stdexcept>
#include <utility>

// The operations of a RandomWorld. The model goes first: where CDataValue would end the process,
// the model throws, and the step is left out.

const std::vector<RandomWorld::NamedOperation> RandomWorld::kOperations{
    {"operator=", &RandomWorld::assign},
    {"operator=(&&)", &RandomWorld::moveAssign},
    {"swap", &RandomWorld::swapValues},
    {"clear", &RandomWorld::clearValue},
    {"copy", &RandomWorld::copyOut},
    {"parseToDataValue", &RandomWorld::parseText},
    {"parse own text", &RandomWorld::parseOwnText},
    {"parse own text", &RandomWorld::parseOwnText},
    {"copy within the pool", &RandomWorld::copyPool},
    {"copy within the pool", &RandomWorld::copyPool},
    {"isEqual", &RandomWorld::compareTwo},
    {"isEqual, almost", &RandomWorld::compareAlmostEqual},
    {"remove many", &RandomWorld::removeMany},
    {"mapSet", &RandomWorld::mapSet},
    {"mapSet", &RandomWorld::mapSet},
    {"mapSet", &RandomWorld::mapSet},
    {"mapSet(&&)", &RandomWorld::mapSetMoved},
    {"mapGet", &RandomWorld::mapGet},
    {"mapRemove", &RandomWorld::mapRemove},
    {"mapFind", &RandomWorld::mapFind},
    {"mapFind(node)", &RandomWorld::mapFindNode},
    {"dataValueFind", &RandomWorld::findStep},
    {"arrayAppend", &RandomWorld::arrayAppend},
    {"arrayAppend", &RandomWorld::arrayAppend},
    {"arrayAppend", &RandomWorld::arrayAppend},
    {"arrayAppend(&&)", &RandomWorld::arrayAppendMoved},
    {"arrayInsert", &RandomWorld::arrayInsert},
    {"arrayInsert", &RandomWorld::arrayInsert},
    {"arrayModify", &RandomWorld::arrayModify},
    {"arrayModify", &RandomWorld::arrayModify},
    {"arrayGet", &RandomWorld::arrayGet},
    {"arrayRemove", &RandomWorld::arrayRemove},
    {"addressMapSet", &RandomWorld::addressMapSet},
    {"addressMapSet", &RandomWorld::addressMapSet},
    {"addressMapGet", &RandomWorld::addressMapGet},
    {"addressMapRemove", &RandomWorld::addressMapRemove},
    {"addressMapFind", &RandomWorld::addressMapFind},
    {"addressMapFind(node)", &RandomWorld::addressMapFindNode},
    {"addressArrayAppend", &RandomWorld::addressArrayAppend},
    {"addressArrayInsert", &RandomWorld::addressArrayInsert},
    {"addressArrayModify", &RandomWorld::addressArrayModify},
    {"addressArrayGet", &RandomWorld::addressArrayGet},
    {"addressArrayRemove", &RandomWorld::addressArrayRemove},
    {"synchJsonData", &RandomWorld::synchJsonData},
    {"synchPreDataPoint", &RandomWorld::synchPreDataPoint},
    {"synPreDataValue", &RandomWorld::synPreDataValue},
};

// Calling both

/// Calls with the key as `const char*` or as QString: both have to behave alike.
template<typename Call>
decltype(auto) RandomWorld::byKey(const std::string& key, Call call)
{
    if (m_dice.oneIn(2))
        return call(QString::fromStdString(key));
    return call(key.c_str());
}

template<typename ModelCall>
bool RandomWorld::allowed(ModelCall modelCall)
{
    try {
        modelCall();
    } catch (const BrokenPrecondition&) {
        note("left out: would end the process");
        return false;
    }
    return true;
}

/// For operations that return a reference, or throw for one past the end.
template<typename RealCall, typename ModelCall>
void RandomWorld::callForNode(RealCall realCall, ModelCall modelCall)
{
    ModelValue* model = nullptr;
    CDataValue* real = nullptr;
    std::string modelError;
    std::string realError;
    const bool called = allowed([&] {
        try {
            model = &modelCall();
        } catch (const std::out_of_range& error) {
            modelError = error.what();
        }
    });
    if (!called)
        return;
    try {
        real = &realCall();
    } catch (const std::out_of_range& error) {
        realError = error.what();
    }
    expectSame("exception", realError, modelError);
    if (model && real)
        expectSameNode("result", *real, *model);
}

template<typename RealCall, typename ModelCall>
void RandomWorld::callForValue(RealCall realCall, ModelCall modelCall)
{
    ModelValue model;
    if (!allowed([&] { model = modelCall(); }))
        return;
    CDataValue real(realCall());
    keep(real, model);
}

template<typename RealCall, typename ModelCall>
void RandomWorld::callForList(RealCall realCall, ModelCall modelCall)
{
    std::list<ModelValue> model;
    if (!allowed([&] { model = modelCall(); }))
        return;
    std::list<CDataValue> real(realCall());
    expectSame("number of results", real.size(), model.size());
    auto found = real.begin();
    for (ModelValue& value : model) {
        if (!m_mismatch.empty())
            return;
        keep(*found++, value);
    }
}

/// Compares a result, and now and then stores it in the pool.
void RandomWorld::keep(CDataValue& real, const ModelValue& model)
{
    ModelValue copy(model);
    compare("result", real, copy);
    if (!m_mayKeep || !m_dice.oneIn(3))
        return;
    const unsigned int slot = m_dice.below(static_cast<unsigned int>(m_pool.size()));
    note("result kept in pool" + std::to_string(slot));
    m_pool[slot].model = model;
    if (m_dice.oneIn(2))
        m_pool[slot].real = real;
    else
        m_pool[slot].real = std::move(real);
}

// Values

void RandomWorld::assign(NodePair& node)
{
    const NodePair value = pickValue();
    *node.model = *value.model;
    *node.real = *value.real;
}

/// A moved pool root or argument is left with content that nobody may rely on, so it gets some.
void RandomWorld::moveAssign(NodePair& node)
{
    const NodePair value = pickValue();
    const bool mayMove = value.place == NodePair::Temporary || value.place == NodePair::Child ||
                         (value.place == NodePair::PoolRoot && !value.model->holds(*node.model));
    if (!mayMove)
        return;
    *node.model = *value.model;
    *node.real = std::move(*value.real);
    if (value.place == NodePair::PoolRoot) {
        *value.real = CDataValue(7);
        *value.model = ModelValue(7);
    }
}

void RandomWorld::swapValues(NodePair& node)
{
    const NodePair value = pickValue();
    if (value.model->holds(*node.model) || node.model->holds(*value.model))
        return;
    node.model->swap(*value.model);
    node.real->swap(*value.real);
    if (value.place == NodePair::Temporary)
        expectSameNode("swapped out", *value.real, *value.model);
}

void RandomWorld::clearValue(NodePair& node)
{
    node.model->clear();
    node.real->clear();
}

void RandomWorld::copyOut(NodePair& node)
{
    ModelValue model(*node.model);
    if (node.place == NodePair::PoolRoot && m_dice.oneIn(2)) {
        note("moved out");
        CDataValue moved(std::move(*node.real));
        *node.real = CDataValue(7);
        *node.model = ModelValue(7);
        keep(moved, model);
        return;
    }
    CDataValue copy(*node.real);
    keep(copy, model);
}

void RandomWorld::parseText(NodePair& node)
{
    const std::string text = randomJson(m_dice, 4, m_dice.oneIn(2));
    note(text);
    const bool expected = ModelValue::parse(text, *node.model);
    const bool parsed =
        m_dice.oneIn(2) ? CDataValue::parseToDataValue(text.c_str(), *node.real)
                        : CDataValue::parseToDataValue(QString::fromStdString(text), *node.real);
    expectSame("parseToDataValue", parsed, expected);
}

void RandomWorld::compareTwo(NodePair& node)
{
    const NodePair value = pickValue();
    expectSame("isEqual", node.real->isEqual(*value.real), node.model->isEqual(*value.model));
    expectSame("isEqual turned round", value.real->isEqual(*node.real),
               value.model->isEqual(*node.model));
}

// Ordinary maps

void RandomWorld::mapSet(NodePair& node)
{
    const std::string key = pickKey();
    const NodePair value = pickValue();
    const bool flag = pickFlag();
    callForNode(
        [&]() -> CDataValue& {
            return byKey(key, [&](const auto& k) -> CDataValue& {
                return node.real->mapSet(k, *value.real, flag);
            });
        },
        [&]() -> ModelValue& { return node.model->mapSet(key, *value.model, flag); });
}

void RandomWorld::mapSetMoved(NodePair& node)
{
    const std::string key = pickKey();
    const NodePair value = pickValue();
    if (value.place != NodePair::Temporary && value.place != NodePair::Child)
        return;
    const bool flag = pickFlag();
    callForNode(
        [&]() -> CDataValue& {
            return byKey(key, [&](const auto& k) -> CDataValue& {
                return node.real->mapSet(k, std::move(*value.real), flag);
            });
        },
        [&]() -> ModelValue& { return node.model->mapSet(key, *value.model, flag); });
}

void RandomWorld::mapGet(NodePair& node)
{
    const std::string key = pickKey();
    callForNode(
        [&]() -> CDataValue& {
            return byKey(key, [&](const auto& k) -> CDataValue& { return node.real->mapGet(k); });
        },
        [&]() -> ModelValue& { return node.model->mapGet(key); });
}

void RandomWorld::mapRemove(NodePair& node)
{
    const std::string key = pickKey();
    const bool flag = pickFlag();
    callForValue(
        [&] { return byKey(key, [&](const auto& k) { return node.real->mapRemove(k, flag); }); },
        [&] { return node.model->mapRemove(key, flag); });
}

void RandomWorld::mapFind(NodePair& node)
{
    const std::string key = pickKey();
    callForList([&] { return byKey(key, [&](const auto& k) { return node.real->mapFind(k); }); },
                [&] { return node.model->mapFind(key); });
}

void RandomWorld::mapFindNode(NodePair& node)
{
    const std::string key = pickKey();
    const NodePair value = pickValue();
    callForList(
        [&] {
            return byKey(key, [&](const auto& k) { return node.real->mapFind(k, *value.real); });
        },
        [&] { return node.model->mapFind(key, *value.model); });
}

void RandomWorld::findStep(NodePair& node)
{
    const std::string key = pickKey();
    const NodePair value = pickValue();
    callForList(
        [&] {
            std::list<CDataValue> found;
            node.real->dataValueFind(key.c_str(), *value.real, &found);
            return found;
        },
        [&] {
            std::list<ModelValue> found;
            node.model->dataValueFind(key, *value.model, &found);
            return found;
        });
}

// Ordinary arrays

void RandomWorld::arrayAppend(NodePair& node)
{
    const NodePair value = pickValue();
    const bool flag = pickFlag();
    unsigned int index = 0;
    if (allowed([&] { index = node.model->arrayAppend(*value.model, flag); }))
        expectSame("index", node.real->arrayAppend(*value.real, flag), index);
}

void RandomWorld::arrayAppendMoved(NodePair& node)
{
    const NodePair value = pickValue();
    if (value.place != NodePair::Temporary && value.place != NodePair::Child)
        return;
    const bool flag = pickFlag();
    unsigned int index = 0;
    if (allowed([&] { index = node.model->arrayAppend(*value.model, flag); }))
        expectSame("index", node.real->arrayAppend(std::move(*value.real), flag), index);
}

void RandomWorld::arrayInsert(NodePair& node)
{
    const unsigned int index = pickIndex(node);
    const NodePair value = pickValue();
    const bool flag = pickFlag();
    if (allowed([&] { node.model->arrayInsert(index, *value.model, flag); }))
        node.real->arrayInsert(index, *value.real, flag);
}

void RandomWorld::arrayModify(NodePair& node)
{
    const unsigned int index = pickIndex(node);
    const NodePair value = pickValue();
    const bool flag = pickFlag();
    callForNode(
        [&]() -> CDataValue& { return node.real->arrayModify(index, *value.real, flag); },
        [&]() -> ModelValue& { return node.model->arrayModify(index, *value.model, flag); });
}

void RandomWorld::arrayGet(NodePair& node)
{
    const unsigned int index = pickIndex(node);
    callForNode([&]() -> CDataValue& { return node.real->arrayGet(index); },
                [&]() -> ModelValue& { return node.model->arrayGet(index); });
}

void RandomWorld::arrayRemove(NodePair& node)
{
    const unsigned int index = pickIndex(node);
    const int count = pickCount();
    const bool flag = pickFlag();
    callForValue([&] { return node.real->arrayRemove(index, count, flag); },
                 [&] { return node.model->arrayRemove(index, count, flag); });
}

// Address containers

void RandomWorld::addressMapSet(NodePair& node)
{
    const std::string key = pickKey();
    const NodePair value = pickValue();
    callForNode(
        [&]() -> CDataValue& {
            return byKey(key, [&](const auto& k) -> CDataValue& {
                return node.real->addressMapSet(k, *value.real);
            });
        },
        [&]() -> ModelValue& { return node.model->addressMapSet(key, *value.model); });
}

void RandomWorld::addressMapGet(NodePair& node)
{
    const std::string key = pickKey();
    callForNode(
        [&]() -> CDataValue& {
            return byKey(key,
                         [&](const auto& k) -> CDataValue& { return node.real->addressMapGet(k); });
        },
        [&]() -> ModelValue& { return node.model->addressMapGet(key); });
}

void RandomWorld::addressMapRemove(NodePair& node)
{
    const std::string key = pickKey();
    node.model->addressMapRemove(key);
    byKey(key, [&](const auto& k) { node.real->addressMapRemove(k); });
}

void RandomWorld::addressMapFind(NodePair& node)
{
    const std::string key = pickKey();
    callForList(
        [&] { return byKey(key, [&](const auto& k) { return node.real->addressMapFind(k); }); },
        [&] { return node.model->addressMapFind(key); });
}

void RandomWorld::addressMapFindNode(NodePair& node)
{
    const std::string key = pickKey();
    const NodePair value = pickValue();
    callForList(
        [&] {
            return byKey(key,
                         [&](const auto& k) { return node.real->addressMapFind(k, *value.real); });
        },
        [&] { return node.model->addressMapFind(key, *value.model); });
}

void RandomWorld::addressArrayAppend(NodePair& node)
{
    const NodePair value = pickValue();
    const unsigned int index = node.model->addressArrayAppend(*value.model);
    expectSame("index", node.real->addressArrayAppend(*value.real), index);
}

void RandomWorld::addressArrayInsert(NodePair& node)
{
    const unsigned int index = pickIndex(node);
    const NodePair value = pickValue();
    node.model->addressArrayInsert(index, *value.model);
    node.real->addressArrayInsert(index, *value.real);
}

void RandomWorld::addressArrayModify(NodePair& node)
{
    const unsigned int index = pickIndex(node);
    const NodePair value = pickValue();
    callForNode(
        [&]() -> CDataValue& { return node.real->addressArrayModify(index, *value.real); },
        [&]() -> ModelValue& { return node.model->addressArrayModify(index, *value.model); });
}

void RandomWorld::addressArrayGet(NodePair& node)
{
    const unsigned int index = pickIndex(node);
    callForNode([&]() -> CDataValue& { return node.real->addressArrayGet(index); },
                [&]() -> ModelValue& { return node.model->addressArrayGet(index); });
}

void RandomWorld::addressArrayRemove(NodePair& node)
{
    const unsigned int index = pickIndex(node);
    const int count = pickCount();
    node.model->addressArrayRemove(index, count);
    node.real->addressArrayRemove(index, count);
}

// Synchronising

void RandomWorld::synchJsonData(NodePair& node)
{
    node.model->synchJsonData();
    node.real->synchJsonData();
}

void RandomWorld::synchPreDataPoint(NodePair& node)
{
    node.model->synchPreDataPoint();
    node.real->synchPreDataPoint();
}

void RandomWorld::synPreDataValue(NodePair& node)
{
    const NodePair start = pickNode();
    note("from " + start.name);
    node.model->synPreDataValue(start.model);
    node.real->synPreDataValue(start.real);
}
