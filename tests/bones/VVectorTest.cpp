#include <vort/bones/VVector.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <numeric>
#include <random>
#include <string>
#include <vector>

using VORT::VVector;
using VORT::VVectorData;

namespace {

template <typename T>
std::vector<int> capacitiesWhileAppending(int count) {
    VVector<T> v;
    std::vector<int> seen;
    for (int i = 0; i < count; ++i) {
        v.append(T());
        if (seen.empty() || seen.back() != v.capacity()) {
            seen.push_back(v.capacity());
        }
    }
    return seen;
}

}  // namespace

TEST(VVectorData, GrowsByBlockSizesWhenMovableAndByHalvesOtherwise) {
    // Four-byte elements behind a 16-byte header: typed data is 20 bytes.
    const int rows[][5] = {{20, 1, 4, 0, 2},   {20, 3, 4, 0, 4},       {20, 7, 4, 0, 8},
                           {20, 13, 4, 0, 28}, {20, 1020, 4, 0, 1020}, {20, 1021, 4, 0, 2044},
                           {24, 0, 8, 1, 0},   {24, 10, 8, 1, 15}};
    for (const auto &r : rows) {
        EXPECT_EQ(VVectorData::grow(r[0], r[1], size_t(r[2]), r[3] != 0), r[4]) << r[1];
    }
    EXPECT_EQ(capacitiesWhileAppending<int>(100),
              (std::vector<int>{2, 4, 6, 8, 10, 12, 28, 60, 124}));
    EXPECT_EQ(capacitiesWhileAppending<std::string>(30),
              (std::vector<int>{1, 3, 6, 10, 16, 25, 39}));

    // A block of five elements, laid out as the template lays out its own.
    struct Block {
        VVectorData header;
        int elements[5];
    } source;
    source.header.ref.init(3);
    source.header.capacity = source.header.size = 5;
    source.header.sharable = source.header.reserved = 1;
    std::iota(std::begin(source.elements), std::end(source.elements), 1);
    for (int size : {8, 2}) {
        VVectorData *copy = VVectorData::malloc(20, size, 4, &source.header);
        // The header as it was.
        EXPECT_EQ(copy->capacity * 100 + copy->size * 10 + int(copy->reserved), 551);
        const int *elements = reinterpret_cast<const int *>(reinterpret_cast<char *>(copy) + 16);
        EXPECT_EQ(std::vector<int>(elements, elements + std::min(size, 5)),
                  std::vector<int>(source.elements, source.elements + std::min(size, 5)));
        std::free(copy);
    }
}

TEST(VVector, MatchesAStdVectorUnderRandomEdits) {
    std::mt19937 random(7);
    VVector<std::string> strings;
    VVector<int> ints;
    std::vector<std::string> model;
    for (int step = 0; step < 5000; ++step) {
        const int size = int(model.size());
        const int at = size ? int(random() % unsigned(size + 1)) : 0;
        const int n = std::min(int(random() % 4), size - at);
        const std::string text = std::to_string(step);
        switch (random() % 7) {
            case 0:
            case 1:
                strings.append(text);
                ints.append(step);
                model.push_back(text);
                break;
            case 2:
                strings.insert(at, n, text);
                ints.insert(at, n, step);
                model.insert(model.begin() + at, size_t(n), text);
                break;
            case 3:
                strings.remove(at, n);
                ints.remove(at, n);
                model.erase(model.begin() + at, model.begin() + at + n);
                break;
            case 4: {
                const int length = int(random() % unsigned(size + 5));
                strings.resize(length);
                ints.resize(length);
                model.resize(size_t(length));
                break;
            }
            case 5:
                strings.squeeze();
                ints.squeeze();
                break;
            case 6:
                ints.reserve(size + n * 10);
                break;
        }
        ASSERT_EQ(strings.toStdVector(), model) << step;
        ASSERT_EQ(ints.size(), int(model.size()));
        ASSERT_LE(ints.size(), ints.capacity());
    }
}
