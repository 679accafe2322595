// SPDX-License-Identifier: Apache-2.0
#include <XYLCore/ThreadPools/XYLList.h>

#include <gtest/gtest.h>

#include <vector>

namespace {

std::vector<int> contents(XYLList<int> &list) {
  std::vector<int> values;
  for (XYLList<int>::iterator it = list.begin(); it != list.end(); ++it)
    values.push_back(*it);
  return values;
}

TEST(XYLListTest, InsertEraseAndOrder) {
  XYLList<int> list;
  EXPECT_TRUE(list.empty());
  EXPECT_EQ(nullptr, list.end().getNode()->getData()) << "the sentinel holds no value";
  list.push_back(2);
  list.push_front(1);
  list.push_back(4);
  XYLList<int>::iterator it = list.begin();
  ++it;
  ++it;
  list.insert(it, 3);
  EXPECT_EQ((std::vector<int>{1, 2, 3, 4}), contents(list));
  EXPECT_EQ(4u, list.size());
  EXPECT_EQ(1, list.front());
  EXPECT_EQ(4, list.back());
  EXPECT_EQ(3, list.at(2));
  EXPECT_EQ(3, list[2]);
  EXPECT_EQ(4, list.begin()[3]);

  XYLList<int>::iterator second = list.begin();
  ++second;
  XYLList<int>::iterator after = list.erase(second);
  EXPECT_EQ(3, *after);
  EXPECT_EQ((std::vector<int>{1, 3, 4}), contents(list));
  list.pop_front();
  list.pop_back();
  EXPECT_EQ((std::vector<int>{3}), contents(list));
  list.pop_front();
  list.pop_front(); // popping an empty list does nothing
  EXPECT_TRUE(list.empty());
}

TEST(XYLListTest, RangeEraseAndIteratorsBothWays) {
  XYLList<int> list;
  for (int i = 0; i < 6; ++i)
    list.push_back(i);
  XYLList<int>::iterator first = list.begin();
  ++first;
  XYLList<int>::iterator last = first;
  ++last;
  ++last;
  ++last;
  list.erase(first, last);
  EXPECT_EQ((std::vector<int>{0, 4, 5}), contents(list));
  XYLList<int>::iterator back = list.end();
  --back;
  EXPECT_EQ(5, *back);
  --back;
  EXPECT_EQ(4, *back);
  back.reset();
  EXPECT_EQ(0, *back);
  list.erase(list.begin(), list.end());
  EXPECT_EQ(0u, list.size());
}

TEST(XYLListTest, CopySpliceAndSwap) {
  XYLList<int> a;
  for (int i = 1; i <= 3; ++i)
    a.push_back(i);
  XYLList<int> b(a);
  a.front() = 10;
  EXPECT_EQ((std::vector<int>{1, 2, 3}), contents(b));
  XYLList<int> c;
  c.push_back(99);
  c = b;
  EXPECT_EQ((std::vector<int>{1, 2, 3}), contents(c));
  c.splice_back(a);
  EXPECT_TRUE(a.empty());
  EXPECT_EQ((std::vector<int>{1, 2, 3, 10, 2, 3}), contents(c));
  EXPECT_EQ(6u, c.size());
  a.push_back(7);
  a.swap(c);
  EXPECT_EQ((std::vector<int>{7}), contents(c));
  EXPECT_EQ(6u, a.size());
  a.clear();
  EXPECT_TRUE(a.empty());
}

// Moving single nodes between lists keeps both lists whole: sizes, order
// and links in both directions.
TEST(XYLListTest, SpliceFrontBackMovesOneNode) {
  struct Case {
    std::vector<int> from, to, fromAfter, toAfter;
  };
  const Case cases[] = {
      {{1, 2, 3}, {}, {2, 3}, {1}},
      {{1}, {7, 8}, {}, {7, 8, 1}},
      {{}, {7}, {}, {7}},
      {{5, 6}, {9}, {6}, {9, 5}},
  };
  for (const Case &c : cases) {
    XYLList<int> from, to;
    for (int v : c.from)
      from.push_back(v);
    for (int v : c.to)
      to.push_back(v);
    to.splice_front_back(from);
    EXPECT_EQ(c.fromAfter, contents(from));
    EXPECT_EQ(c.toAfter, contents(to));
    EXPECT_EQ(c.fromAfter.size(), from.size());
    EXPECT_EQ(c.toAfter.size(), to.size());
    std::vector<int> backwards;
    for (XYLList<int>::iterator it = --to.end(); it != to.end(); --it)
      backwards.push_back(*it);
    EXPECT_EQ(std::vector<int>(c.toAfter.rbegin(), c.toAfter.rend()), backwards);
  }
  XYLList<int> self;
  self.push_back(1);
  self.splice_front_back(self);
  EXPECT_EQ(std::vector<int>{1}, contents(self)) << "splicing a list into itself does nothing";
}

} // namespace
