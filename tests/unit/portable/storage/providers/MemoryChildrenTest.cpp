#include <pkgcore/portable/storage/providers/memory/MemoryTree.hpp>

#include <gtest/gtest.h>

#include <string>

namespace {

using foundation::storage::portable::MemoryChildren;
using foundation::storage::portable::MemoryNode;
using foundation::storage::portable::SharedNode;
using foundation::storage::portable::textOf;

SharedNode newNode() { return std::make_shared<MemoryNode>(foundation::storage::provider::Item()); }

std::u16string namesOf(const MemoryChildren& children) {
    std::u16string names;
    for (const auto& [name, node] : children) {
        names.append(textOf(name)) += u' ';
    }
    return names;
}

TEST(MemoryChildren, AreNoneAtFirst) {
    const MemoryChildren children;
    EXPECT_TRUE(children.empty());
    EXPECT_EQ(children.size(), 0u);
    EXPECT_EQ(children.find(u"a"), nullptr);
    EXPECT_TRUE(children.begin() == children.end());
}

TEST(MemoryChildren, AreFoundByNameAndShownInOrder) {
    MemoryChildren children;
    const SharedNode node = newNode();
    for (const char16_t* const name : {u"b", u"\xE000", u"a", u"\xD83D\xDE00", u"aa"}) {
        children.put(name, std::u16string_view(name) == u"aa" ? node : newNode());
    }
    ASSERT_NE(children.find(u"aa"), nullptr);
    EXPECT_EQ(*children.find(u"aa"), node);
    EXPECT_EQ(children.find(u"A"), nullptr);
    EXPECT_EQ(namesOf(children), u"a aa b \xD83D\xDE00 \xE000 ");
    EXPECT_EQ(textOf(children.behind(u"a")->first), u"aa");
    EXPECT_EQ(textOf(children.behind(u"aaa")->first), u"b");
}

TEST(MemoryChildren, PuttingANameAgainChangesItsNode) {
    MemoryChildren children;
    children.put(u"a", newNode());
    const SharedNode second = newNode();
    children.put(u"a", second);
    EXPECT_EQ(children.size(), 1u);
    EXPECT_EQ(*children.find(u"a"), second);
}

TEST(MemoryChildren, WhatIsTakenIsGoneByNameAndInOrder) {
    MemoryChildren children;
    const SharedNode node = newNode();
    children.put(u"a", node);
    children.put(u"b", newNode());
    EXPECT_EQ(children.take(u"a"), node);
    EXPECT_EQ(children.find(u"a"), nullptr);
    EXPECT_EQ(namesOf(children), u"b ");
    EXPECT_NE(children.takeAny(), nullptr);
    EXPECT_TRUE(children.empty());
    children.put(u"c", node);
    EXPECT_EQ(namesOf(children), u"c ");
}

}  // namespace
