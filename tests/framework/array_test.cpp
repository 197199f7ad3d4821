#include <gtest/gtest.h>

#include <climits>
#include <stdexcept>
#include <string>
#include <vector>

#include "korutil/framework/byte_array.h"
#include "korutil/framework/ob_array.h"
#include "korutil/framework/ptr_array.h"
#include "korutil/framework/string_array.h"
#include "tests/framework/thrown.h"
#include "tests/support/random.h"

namespace {

using kor::test::isMemoryFailure;

// What differs between the arrays: an element for a number, and the number of an element.
struct Bytes {
    using Array = CByteArray;
    static BYTE make(int number) { return static_cast<BYTE>(number); }
    static int number(BYTE element) { return element; }
};

struct Pointers {
    using Array = CPtrArray;
    static void* make(int number) { return reinterpret_cast<void*>(static_cast<UINT_PTR>(number)); }
    static int number(const void* element) { return static_cast<int>(reinterpret_cast<UINT_PTR>(element)); }
};

struct Objects {
    using Array = CObArray;
    static CObject* make(int number) {
        return reinterpret_cast<CObject*>(static_cast<UINT_PTR>(number) * 16);
    }
    static int number(const CObject* element) {
        return static_cast<int>(reinterpret_cast<UINT_PTR>(element) / 16);
    }
};

struct Strings {
    using Array = CStringArray;
    static CString make(int number) {
        return number == 0 ? CString() : CString(std::to_string(number).c_str());
    }
    static int number(const CString& element) {
        return element.IsEmpty() ? 0 : std::stoi(std::string(element));
    }
};

template <class Kind>
class Array : public testing::Test {
  protected:
    using Type = typename Kind::Array;

    static std::vector<int> numbersOf(const Type& array) {
        std::vector<int> numbers;
        for (int i = 0; i < array.GetSize(); ++i)
            numbers.push_back(Kind::number(array.GetAt(i)));
        return numbers;
    }

    static void fill(Type& array, std::initializer_list<int> numbers) {
        for (const int number : numbers)
            array.Add(Kind::make(number));
    }
};

using Kinds = testing::Types<Bytes, Pointers, Objects, Strings>;
TYPED_TEST_SUITE(Array, Kinds);

using Numbers = std::vector<int>;

TYPED_TEST(Array, MakesRoomForTheGrowSize) {
    typename TypeParam::Array array;
    EXPECT_EQ(array.GetUpperBound(), -1);
    array.SetSize(0, 1000);
    array.Add(TypeParam::make(1));
    const auto* data = array.GetData();
    for (int i = 1; i < 1000; ++i)
        array.Add(TypeParam::make(2));
    EXPECT_EQ(array.GetData(), data);
    array.RemoveAll();
    EXPECT_EQ(array.GetData(), nullptr);
}

TYPED_TEST(Array, SetsElementsAlsoBehindTheEnd) {
    typename TypeParam::Array array;
    array.SetAtGrow(2, TypeParam::make(3));
    array.SetAtGrow(0, TypeParam::make(1));
    array[1] = TypeParam::make(2);
    EXPECT_EQ(this->numbersOf(array), (Numbers{1, 2, 3}));
    array.SetAt(2, TypeParam::make(4));
    array.ElementAt(1) = array.GetAt(2);
    array.InsertAt(1, array.GetAt(0), 30);  // an element of the array itself, which moves
    EXPECT_EQ(this->numbersOf(array)[30], 1);
    EXPECT_EQ(TypeParam::number(array.GetData()[32]), 4);
}

TYPED_TEST(Array, TakesOtherArraysAndItself) {
    typename TypeParam::Array array;
    typename TypeParam::Array other;
    this->fill(array, {1, 2});
    this->fill(other, {3, 4, 5});
    EXPECT_EQ(array.Append(other), 2);
    EXPECT_EQ(this->numbersOf(array), (Numbers{1, 2, 3, 4, 5}));
    array.RemoveAt(2, 3);
    array.InsertAt(1, &array);
    EXPECT_EQ(this->numbersOf(array), (Numbers{1, 1, 2, 2}));
    const typename TypeParam::Array* nothing = nullptr;
    array.InsertAt(0, nothing);
    array.Copy(array);
    EXPECT_EQ(this->numbersOf(array), (Numbers{1, 1, 2, 2}));
    array.Copy(other);
    EXPECT_EQ(this->numbersOf(array), this->numbersOf(other));
}

TYPED_TEST(Array, RefusesWhatIsOutside) {
    typename TypeParam::Array array;
    this->fill(array, {1, 2, 3});
    const auto element = TypeParam::make(9);
    for (const int index : {-1, 3, INT_MAX, INT_MIN}) {
        EXPECT_THROW(array.GetAt(index), std::out_of_range) << index;
        EXPECT_THROW(array.SetAt(index, element), std::out_of_range) << index;
        EXPECT_THROW(array.ElementAt(index), std::out_of_range) << index;
        EXPECT_THROW(array[index], std::out_of_range) << index;
        EXPECT_THROW(array.RemoveAt(index), std::out_of_range) << index;
    }
    EXPECT_THROW(array.RemoveAt(1, 3), std::out_of_range);
    EXPECT_THROW(array.RemoveAt(1, -1), std::out_of_range);
    EXPECT_THROW(array.RemoveAt(2, INT_MAX), std::out_of_range);
    EXPECT_THROW(array.InsertAt(-1, element), std::out_of_range);
    EXPECT_THROW(array.SetAtGrow(-1, element), std::out_of_range);
    EXPECT_THROW(array.SetSize(-1), std::out_of_range);
    EXPECT_EQ(this->numbersOf(array), (Numbers{1, 2, 3}));
}

TYPED_TEST(Array, SizesThatCannotBeAreMemoryFailures) {
    typename TypeParam::Array array;
    this->fill(array, {1, 2, 3});
    EXPECT_TRUE(isMemoryFailure([&] { array.InsertAt(INT_MAX, TypeParam::make(1)); }));
    EXPECT_TRUE(isMemoryFailure([&] { array.InsertAt(2, TypeParam::make(1), INT_MAX); }));
    EXPECT_TRUE(isMemoryFailure([&] { array.SetAtGrow(INT_MAX, TypeParam::make(1)); }));
    EXPECT_EQ(this->numbersOf(array), (Numbers{1, 2, 3}));
}

TYPED_TEST(Array, BehavesAsAVectorWouldInRandomChanges) {
    auto random = kor::test::generator();
    const auto below = [&random](int limit) {
        return static_cast<int>(random() % static_cast<unsigned>(limit));
    };
    typename TypeParam::Array array;
    Numbers model;
    for (int step = 0; step < kor::test::scaled(3000); ++step) {
        const int size = array.GetSize(), number = below(256), index = below(size + 3), count = below(4),
                  action = below(6);
        if (action == 0) {
            array.Add(TypeParam::make(number));
            model.push_back(number);
        } else if (action == 1) {
            array.InsertAt(index, TypeParam::make(number), count);
            if (count > 0 && index > size) model.resize(static_cast<std::size_t>(index));
            model.insert(model.begin() + std::min<int>(index, static_cast<int>(model.size())),
                         static_cast<std::size_t>(count), number);
        } else if (action == 2 && index + count <= size) {
            array.RemoveAt(index, count);
            model.erase(model.begin() + index, model.begin() + index + count);
        } else if (action == 3) {
            array.SetSize(index, below(6) - 1);
            model.resize(static_cast<std::size_t>(index));
        } else if (action == 4) {
            array.FreeExtra();
        } else if (action == 5 && size < 200) {
            array.Append(array);
            const Numbers copy(model);
            model.insert(model.end(), copy.begin(), copy.end());
        }
        ASSERT_EQ(this->numbersOf(array), model) << "step " << step;
    }
}

}  // namespace
