#include "ImageTestSupport.h"
#include "support/Latch.h"
#include <vort/image/Node.h>

#include <QtGui/QPixmap>

#include <gtest/gtest.h>

#include <new>
#include <thread>
#include <vector>

using VORT::Holder;
using VORT::ImageCompositor::Node;
using vort_test::CountedNode;
using vort_test::solid;

TEST(ImageNode, MakesTheMissingFormOnceAndOnlyWhenAsked) {
    Node fromImage("(i;;)", new QImage(solid(3, 2, 0xFF102030)));
    EXPECT_EQ(fromImage.getPixmap(false), nullptr);
    EXPECT_EQ(fromImage.getModifiablePixmap(false), nullptr);
    QPixmap const *pixmap = fromImage.getPixmap(true);
    ASSERT_NE(pixmap, nullptr);
    EXPECT_EQ(pixmap->size(), QSize(3, 2));
    EXPECT_EQ(fromImage.getPixmap(true), pixmap);
    EXPECT_EQ(fromImage.getModifiablePixmap(true), pixmap);

    Node fromPixmap("(p;;)", new QPixmap(QPixmap::fromImage(solid(2, 2, 0xFF00FF00))));
    EXPECT_EQ(fromPixmap.getImage(false), nullptr);
    QImage *image = fromPixmap.getImage(true);
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->pixel(1, 1), 0xFF00FF00u);
    EXPECT_EQ(fromPixmap.getModifiableImage(true), image);

    Node empty;
    EXPECT_FALSE(empty.isValid());
    EXPECT_EQ(empty.getImage(true), nullptr);
    EXPECT_EQ(empty.getPixmap(true), nullptr);
    EXPECT_FALSE(empty.isValid());
    EXPECT_TRUE(fromImage.isValid());
}

TEST(ImageNode, RemakesAFormOnlyWhenItHoldsBoth) {
    Node node("(n;;)", new QPixmap(QPixmap::fromImage(solid(2, 2, 0xFF0000FF))));
    node.updateImageFromPixmap();
    EXPECT_EQ(node.getImage(false), nullptr);

    ASSERT_NE(node.getImage(true), nullptr);
    node.getModifiablePixmap(false)->fill(Qt::red);
    EXPECT_EQ(node.getImage(false)->pixel(0, 0), 0xFF0000FFu);
    node.updateImageFromPixmap();
    EXPECT_EQ(node.getImage(false)->pixel(0, 0), 0xFFFF0000u);

    node.getImage(false)->fill(0xFF00FF00u);
    node.updatePixmapFromImage();
    EXPECT_EQ(node.getPixmap(false)->toImage().pixel(1, 1), 0xFF00FF00u);
}

TEST(ImageNode, OwnsWhatItIsHandedAndDropsTheOtherForm) {
    Node node("(n;;)", new QImage(solid(1, 1, 0xFF000000)));
    QImage *image = node.getImage(false);
    QPixmap const *pixmap = node.getPixmap(true);

    // The pointer it holds changes nothing, and keeps the other form.
    node.setDataToOwn(image);
    EXPECT_EQ(node.getImage(false), image);
    EXPECT_EQ(node.getPixmap(false), pixmap);

    auto *replacement = new QPixmap(4, 4);
    node.setDataToOwn(replacement);
    EXPECT_EQ(node.getPixmap(false), replacement);
    EXPECT_EQ(node.getImage(false), nullptr);

    auto *second = new QImage(solid(5, 5, 0xFFFFFFFF));
    node.setDataToOwn(second);
    EXPECT_EQ(node.getImage(false), second);
    EXPECT_EQ(node.getPixmap(false), nullptr);
    node.setDataToOwn(static_cast<QImage *>(nullptr));
    EXPECT_FALSE(node.isValid());
}

TEST(ImageNode, KeepsTheKeyOnlyForAnImage) {
    const Node fromImage("(i;;)", new QImage(solid(1, 1, 0xFF000000)));
    const Node fromPixmap("(p;;)", new QPixmap(1, 1));
    EXPECT_EQ(fromImage.getKey(), "(i;;)");
    EXPECT_EQ(fromPixmap.getKey(), "");
    EXPECT_EQ(fromImage.toImageResource().toStringRef(), "(i;;)");
    EXPECT_EQ(fromPixmap.toImageResource().toStringRef(), "");

    Node renamed;
    renamed.setKey("(r;;)");
    EXPECT_EQ(renamed.getKey(), "(r;;)");
}

TEST(ImageNode, CopiesShareThePicturesAndTheCount) {
    Holder<Node> holder(new Node("(c;;)", new QImage(solid(1, 1, 0xFF000000))));
    Holder<Node> second(holder);
    // The copy would delete the same pictures as its source, so it is made in storage that
    // is released without running its destructor; its key is short enough to own no memory.
    alignas(Node) unsigned char storage[sizeof(Node)];
    Node *copy = new (storage) Node(*holder);
    EXPECT_EQ(copy->getImage(false), holder->getImage(false));
    EXPECT_EQ(copy->getKey(), "(c;;)");
    EXPECT_EQ(copy->incrementReference(), 3);
}

TEST(ImageNode, IsDestroyedOnceByItsLastHolder) {
    const int before = CountedNode::destroyed.load();
    {
        Holder<Node> first(new CountedNode("(d;;)", new QImage(solid(1, 1, 0xFF000000))));
        {
            Holder<Node> second = first;
            first = Holder<Node>();
            EXPECT_EQ(CountedNode::destroyed.load(), before);
        }
        EXPECT_EQ(CountedNode::destroyed.load(), before + 1);
    }
    EXPECT_EQ(CountedNode::destroyed.load(), before + 1);
}

TEST(ImageNodeConcurrency, HoldersComeAndGoOnAnyThread) {
    const int before = CountedNode::destroyed.load();
    const int threads = 4;
    const int rounds = 20000;
    Holder<Node> shared(new CountedNode("(t;;)", new QImage(solid(2, 2, 0xFF000000))));
    vort_test::Latch ready(threads);
    vort_test::Latch go(1);
    std::vector<std::thread> workers;
    for (int t = 0; t < threads; ++t) {
        workers.emplace_back([&] {
            Holder<Node> mine = shared;
            ready.countDown();
            go.wait();
            for (int i = 0; i < rounds; ++i) {
                Holder<Node> copy = mine;
                Holder<Node> another(copy.get());
            }
        });
    }
    ASSERT_TRUE(ready.wait());
    shared = Holder<Node>();  // the workers' holders are now the only ones
    go.countDown();
    for (std::thread &worker : workers) {
        worker.join();
    }
    EXPECT_EQ(CountedNode::destroyed.load(), before + 1);
}
