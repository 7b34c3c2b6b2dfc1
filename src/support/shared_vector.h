// A vector whose copies share its elements until one of them is changed ("copy on write").
//
// Copying costs a reference count, whatever the length, and vectors that share are equal without a
// look at their elements. Access through a vector that isn't const may copy. All that share belong
// to one thread.
#pragma once

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <memory>
#include <utility>
#include <vector>

namespace brimwatch {

// NOLINTBEGIN(readability-identifier-naming): the names are those of the standard containers
template <class Element>
class SharedVector {
    using Elements = std::vector<Element>;
    struct Block {
        Elements elements;
        bool isNoted = false;
    };

  public:
    using value_type = Element;
    using size_type = typename Elements::size_type;
    using difference_type = typename Elements::difference_type;
    using iterator = typename Elements::iterator;
    using const_iterator = typename Elements::const_iterator;

    SharedVector() = default;
    SharedVector(std::initializer_list<Element> elements)
        : block_(std::make_shared<Block>(Block{.elements = elements})) {}
    template <class Iterator>
    SharedVector(Iterator first, Iterator last)
        : block_(std::make_shared<Block>(Block{.elements = Elements(first, last)})) {}

    bool empty() const { return size() == 0; }
    size_type size() const { return shared().size(); }
    const_iterator begin() const { return shared().begin(); }
    const_iterator end() const { return shared().end(); }
    const Element& operator[](size_type index) const { return shared()[index]; }
    const Element& at(size_type index) const { return shared().at(index); }
    const Element& front() const { return shared().front(); }
    const Element& back() const { return shared().back(); }

    iterator begin() { return own().begin(); }
    iterator end() { return own().end(); }
    Element& operator[](size_type index) { return own()[index]; }
    Element& at(size_type index) { return own().at(index); }
    Element& front() { return own().front(); }
    Element& back() { return own().back(); }

    void reserve(size_type count) { own().reserve(count); }
    void resize(size_type count) { own().resize(count); }
    void clear() { block_.reset(); }
    void push_back(Element element) { own().push_back(std::move(element)); }
    void pop_back() { own().pop_back(); }
    iterator insert(iterator place, Element element) {
        return own().insert(place, std::move(element));
    }
    template <class Iterator>
    iterator insert(iterator place, Iterator first, Iterator last) {
        return own().insert(place, first, last);
    }
    iterator erase(iterator place) { return own().erase(place); }
    iterator erase(iterator first, iterator last) { return own().erase(first, last); }

    // A note on the elements by whoever has examined them. All that share have it, and any change
    // takes it away.
    bool isNoted() const { return block_ && block_->isNoted; }
    void note() const {
        if (block_) block_->isNoted = true;
    }

    friend bool operator==(const SharedVector& a, const SharedVector& b) {
        return a.block_ == b.block_ || a.shared() == b.shared();
    }

  private:
    const Elements& shared() const {
        static const Elements none;
        return block_ ? block_->elements : none;
    }

    Elements& own() {
        if (!block_) {
            block_ = std::make_shared<Block>();
        } else if (block_.use_count() > 1) {
            block_ = std::make_shared<Block>(Block{.elements = block_->elements});
        }
        block_->isNoted = false;
        return block_->elements;
    }

    std::shared_ptr<Block> block_;
};

template <class Element, class Predicate>
typename SharedVector<Element>::size_type erase_if(SharedVector<Element>& vector,
                                                   Predicate predicate) {
    const SharedVector<Element>& looked = vector;
    if (std::none_of(looked.begin(), looked.end(), predicate)) return 0;
    const auto last = std::remove_if(vector.begin(), vector.end(), predicate);
    const auto count = static_cast<typename SharedVector<Element>::size_type>(vector.end() - last);
    vector.erase(last, vector.end());
    return count;
}
// NOLINTEND(readability-identifier-naming)

}  // namespace brimwatch
