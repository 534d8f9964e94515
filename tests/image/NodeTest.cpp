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
    Node fromImage("(i;;)", new QImage(solid(3, 2, 0xFF102030u)));
    EXPECT_EQ(fromImage.getPixmap(false), nullptr);
    QPixmap const *pixmap = fromImage.getPixmap(true);
    ASSERT_NE(pixmap, nullptr);
    EXPECT_EQ(pixmap->size(), QSize(3, 2));
    EXPECT_EQ(fromImage.getModifiablePixmap(true), pixmap);

    Node fromPixmap("(p;;)", new QPixmap(QPixmap::fromImage(solid(2, 2, 0xFF0000FFu))));
    EXPECT_EQ(fromPixmap.getImage(false), nullptr);
    fromPixmap.updateImageFromPixmap();  // only one form: nothing to remake
    EXPECT_EQ(fromPixmap.getImage(false), nullptr);
    QImage *image = fromPixmap.getImage(true);
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(fromPixmap.getModifiableImage(true), image);

    // With both forms, each can be remade from the other.
    fromPixmap.getModifiablePixmap(false)->fill(Qt::red);
    EXPECT_EQ(fromPixmap.getImage(false)->pixel(0, 0), 0xFF0000FFu);
    fromPixmap.updateImageFromPixmap();
    EXPECT_EQ(fromPixmap.getImage(false)->pixel(0, 0), 0xFFFF0000u);
    fromPixmap.getImage(false)->fill(0xFF00FF00u);
    fromPixmap.updatePixmapFromImage();
    EXPECT_EQ(fromPixmap.getPixmap(false)->toImage().pixel(1, 1), 0xFF00FF00u);

    Node empty;
    EXPECT_EQ(empty.getImage(true), nullptr);
    EXPECT_EQ(empty.getPixmap(true), nullptr);
    EXPECT_FALSE(empty.isValid());
}

TEST(ImageNode, OwnsWhatItIsHandedAndDropsTheOtherForm) {
    Node node("(n;;)", new QImage(solid(1, 1, 0xFF000000u)));
    QImage *image = node.getImage(false);
    QPixmap const *pixmap = node.getPixmap(true);
    node.setDataToOwn(image);  // the pointer it holds: both forms stay
    EXPECT_EQ(node.getPixmap(false), pixmap);

    auto *replacement = new QPixmap(4, 4);
    node.setDataToOwn(replacement);
    EXPECT_EQ(node.getPixmap(false), replacement);
    EXPECT_EQ(node.getImage(false), nullptr);
    node.setDataToOwn(new QImage(solid(5, 5, 0xFFFFFFFFu)));
    EXPECT_EQ(node.getPixmap(false), nullptr);
    node.setDataToOwn(static_cast<QImage *>(nullptr));
    EXPECT_FALSE(node.isValid());
}

TEST(ImageNode, KeepsTheKeyOnlyForAnImageAndSharesPicturesWithCopies) {
    const Holder<Node> fromImage(new Node("(i;;)", new QImage(solid(1, 1, 0xFF000000u))));
    const Node fromPixmap("(p;;)", new QPixmap(1, 1));
    EXPECT_EQ(fromImage->toImageResource().toStringRef(), "(i;;)");
    EXPECT_EQ(fromPixmap.toImageResource().toStringRef(), "");

    // A copy would delete the same pictures as its source, so it is made in storage that is
    // released without its destructor; its key is short enough to own no memory.
    const Holder<Node> second = fromImage;
    alignas(Node) unsigned char storage[sizeof(Node)];
    Node *copy = new (storage) Node(*fromImage);
    EXPECT_EQ(copy->getImage(false), fromImage->getImage(false));
    EXPECT_EQ(copy->getKey(), "(i;;)");
    EXPECT_EQ(copy->incrementReference(), 3);
}

TEST(ImageNodeConcurrency, HoldersComeAndGoOnAnyThread) {
    const int before = CountedNode::destroyed.load();
    Holder<Node> shared(new CountedNode("(t;;)", new QImage(solid(2, 2, 0xFF000000u))));
    vort_test::Latch ready(4);
    vort_test::Latch go(1);
    std::vector<std::thread> workers;
    for (int t = 0; t < 4; ++t) {
        workers.emplace_back([&] {
            Holder<Node> mine = shared;
            ready.countDown();
            go.wait();
            for (int i = 0; i < 20000; ++i) {
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
    // The last holder, on whichever thread, destroyed the node exactly once.
    EXPECT_EQ(CountedNode::destroyed.load(), before + 1);
}
