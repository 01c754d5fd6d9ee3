#include "originalimageprovider.h"

#include "colorcorrectionmodel.h"
#include "emulatedpool.h"
#include "guitestapp.h"

#include <gtest/gtest.h>

namespace {

TEST(OriginalImageProvider, ServesTheInitialImageWhateverTheIdAndFlipsItsCounter)
{
    EmulatedPool pool;
    pool.setFrameSize(EmulatedPool::kMedical, 320, 200);
    auto model = pool.createModel();
    ASSERT_TRUE(model->Open(pool.info(EmulatedPool::kMedical)));
    model->SetGridPositon(pool.grid(EmulatedPool::kMedical));
    ASSERT_TRUE(model->ApplyInitialCameraImageAndPatchValues());

    OriginalImageProvider provider(model.get());
    QSize size(-1, -1);
    EXPECT_TRUE(provider.requestImage("0_0", &size, QSize()).isNull());
    EXPECT_EQ(provider.counter(), 0);
    provider.grabOriginalImage();
    EXPECT_EQ(provider.counter(), 1);
    const QImage first = provider.requestImage("anything", &size, QSize(10, 10));
    EXPECT_EQ(first.size(), QSize(320, 200));
    EXPECT_EQ(size, QSize(320, 200));
    QImage expected;
    model->GetCameraInitialImage(expected);
    EXPECT_EQ(first, expected);
    provider.grabOriginalImage();
    EXPECT_EQ(provider.counter(), 0);
    provider.grabOriginalImage();
    provider.reset();
    EXPECT_EQ(provider.counter(), 0);
    EXPECT_TRUE(provider.requestImage("0_1", &size, QSize()).isNull());
    EXPECT_EQ(provider.generation(), 0);
    model->Close();
}

}  // namespace
