/* SPDX-License-Identifier: Apache-2.0
 * XYLList.h - the library's doubly linked list template.
 *
 * XYLList<T> is a circular doubly linked list around one sentinel node. The
 * sentinel is end(): its getData() answers null, every data node answers a
 * pointer to its value. Iterators stay valid until the node they stand on is
 * erased.
 *
 * Ownership: the list owns its nodes, not what a pointer element points to.
 * Thread safety: none; the owner locks (the pools keep a list under their own
 * lock, a throwable's back trace belongs to one thread).
 * Failure: node allocation uses operator new and so throws std::bad_alloc;
 * the list is unchanged when it does. at() and operator[] past the end answer
 * the sentinel's value position (undefined to dereference), as std::list does.
 * Complexity: insertion and erasure O(1); size() O(1); at(i) O(i).
 *
 * The template is header-only because it serves both the throwables (below
 * every other area) and the thread pools.
 */
#ifndef XYLCORE_THREADPOOLS_XYLLIST_H
#define XYLCORE_THREADPOOLS_XYLLIST_H

#include <cstddef>

template <class T> class XYLList;

// A link of the list; the sentinel is a plain XYLListNode.
template <class T> class XYLListNode {
public:
  XYLListNode() : m_pPrev(this), m_pNext(this) {}
  virtual ~XYLListNode() {}
  // The value held by the node; the sentinel holds none.
  virtual T *getData() { return nullptr; }

  XYLListNode *m_pPrev;
  XYLListNode *m_pNext;

private:
  XYLListNode(const XYLListNode &) = delete;
  XYLListNode &operator=(const XYLListNode &) = delete;
};

template <class T> class XYLListDataNode : public XYLListNode<T> {
public:
  explicit XYLListDataNode(const T &value) : m_data(value) {}
  T *getData() override { return &m_data; }

private:
  T m_data;
};

template <class T> class XYLListIterator {
public:
  XYLListIterator() : m_pList(nullptr), m_pNode(nullptr) {}
  XYLListIterator(XYLList<T> *list, XYLListNode<T> *node) : m_pList(list), m_pNode(node) {}

  XYLListIterator &operator++() {
    m_pNode = m_pNode->m_pNext;
    return *this;
  }
  XYLListIterator operator++(int) {
    XYLListIterator before(*this);
    ++*this;
    return before;
  }
  XYLListIterator &operator--() {
    m_pNode = m_pNode->m_pPrev;
    return *this;
  }
  XYLListIterator operator--(int) {
    XYLListIterator before(*this);
    --*this;
    return before;
  }
  bool operator!=(const XYLListIterator &other) const { return m_pNode != other.m_pNode; }
  bool operator==(const XYLListIterator &other) const { return m_pNode == other.m_pNode; }
  T &operator*() const { return *m_pNode->getData(); }
  T *operator->() const { return m_pNode->getData(); }
  // The element `index` positions after the current one (0 is the current).
  T &operator[](std::size_t index) const {
    XYLListNode<T> *node = m_pNode;
    while (index-- > 0)
      node = node->m_pNext;
    return *node->getData();
  }
  // Back to the first element of the list.
  void reset() { m_pNode = m_pList->m_sentinel.m_pNext; }
  XYLListNode<T> *getNode() const { return m_pNode; }

private:
  XYLList<T> *m_pList;
  XYLListNode<T> *m_pNode;
};

template <class T> class XYLList {
  friend class XYLListIterator<T>;

public:
  typedef XYLListIterator<T> iterator;

  XYLList() : m_iSize(0) {}
  XYLList(const XYLList &other) : m_iSize(0) { appendAll(other); }
  XYLList &operator=(const XYLList &other) {
    if (this != &other) {
      XYLList copy(other);
      swap(copy);
    }
    return *this;
  }
  virtual ~XYLList() { clear(); }

  std::size_t size() const { return m_iSize; }
  bool empty() const { return m_iSize == 0; }
  T &front() { return *m_sentinel.m_pNext->getData(); }
  T &back() { return *m_sentinel.m_pPrev->getData(); }
  iterator begin() { return iterator(this, m_sentinel.m_pNext); }
  iterator end() { return iterator(this, &m_sentinel); }
  T &at(std::size_t index) { return begin()[index]; }
  T &operator[](std::size_t index) { return at(index); }

  // Inserts before `position`; returns an iterator on the new element.
  iterator insert(iterator position, const T &value) { return iterator(this, _insert(position.getNode(), value)); }
  // Erases one element; returns the iterator after it.
  iterator erase(iterator position) { return iterator(this, _erase(position.getNode())); }
  // Erases [first, last); returns last.
  iterator erase(iterator first, iterator last) {
    while (first != last)
      first = erase(first);
    return last;
  }
  void push_front(const T &value) { _insert(m_sentinel.m_pNext, value); }
  void push_back(const T &value) { _insert(&m_sentinel, value); }
  void pop_front() {
    if (!empty())
      _erase(m_sentinel.m_pNext);
  }
  void pop_back() {
    if (!empty())
      _erase(m_sentinel.m_pPrev);
  }
  void clear() {
    while (!empty())
      _erase(m_sentinel.m_pNext);
  }
  // Moves every element of `other` to the end of this list in O(1).
  void splice_back(XYLList &other) {
    if (&other == this || other.empty())
      return;
    XYLListNode<T> *first = other.m_sentinel.m_pNext;
    XYLListNode<T> *last = other.m_sentinel.m_pPrev;
    other.m_sentinel.m_pNext = other.m_sentinel.m_pPrev = &other.m_sentinel;
    first->m_pPrev = m_sentinel.m_pPrev;
    m_sentinel.m_pPrev->m_pNext = first;
    last->m_pNext = &m_sentinel;
    m_sentinel.m_pPrev = last;
    m_iSize += other.m_iSize;
    other.m_iSize = 0;
  }
  // Moves the first element of `other` to the end of this list in O(1),
  // without allocating; does nothing when other is empty.
  void splice_front_back(XYLList &other) {
    if (&other == this || other.empty())
      return;
    XYLListNode<T> *node = other.m_sentinel.m_pNext;
    node->m_pPrev->m_pNext = node->m_pNext;
    node->m_pNext->m_pPrev = node->m_pPrev;
    --other.m_iSize;
    node->m_pNext = &m_sentinel;
    node->m_pPrev = m_sentinel.m_pPrev;
    m_sentinel.m_pPrev->m_pNext = node;
    m_sentinel.m_pPrev = node;
    ++m_iSize;
  }
  void swap(XYLList &other) {
    XYLList tmp;
    tmp.splice_back(*this);
    splice_back(other);
    other.splice_back(tmp);
  }

private:
  XYLListNode<T> *_insert(XYLListNode<T> *before, const T &value) {
    XYLListNode<T> *node = new XYLListDataNode<T>(value);
    node->m_pNext = before;
    node->m_pPrev = before->m_pPrev;
    before->m_pPrev->m_pNext = node;
    before->m_pPrev = node;
    ++m_iSize;
    return node;
  }
  XYLListNode<T> *_erase(XYLListNode<T> *node) {
    XYLListNode<T> *next = node->m_pNext;
    node->m_pPrev->m_pNext = next;
    next->m_pPrev = node->m_pPrev;
    delete node;
    --m_iSize;
    return next;
  }
  void appendAll(const XYLList &other) {
    XYLList &source = const_cast<XYLList &>(other);
    try {
      for (iterator it = source.begin(); it != source.end(); ++it)
        push_back(*it);
    } catch (...) {
      clear();
      throw;
    }
  }

  XYLListNode<T> m_sentinel;
  std::size_t m_iSize;
};

#endif // XYLCORE_THREADPOOLS_XYLLIST_H
