#include "controller/parsing/jsonobject.h"

#include <gtest/gtest.h>

namespace tarnelLib::controller {

TEST(Readers, signedAndByteReadersTakeWholeNumbersAlone)
{
    struct Case {
        double number;
        qint32 asInt32;
        quint8 asUint8;
    };
    for (const Case &expected : {Case{-1, -1, 255},
                                 {300, 300, 44},
                                 {2.5, 0, 0},
                                 {2147483648.0, 0, 0},
                                 {-2147483648.0, -2147483647 - 1, 0},
                                 {1e300, 0, 0}}) {
        qint32 int32 = 7;
        quint8 uint8 = 7;
        EXPECT_TRUE(readValue(QJsonValue(expected.number), int32));
        EXPECT_TRUE(readValue(QJsonValue(expected.number), uint8));
        EXPECT_EQ(int32, expected.asInt32) << expected.number;
        EXPECT_EQ(uint8, expected.asUint8) << expected.number;
    }
    for (const QJsonValue &wrong : {QJsonValue(true), QJsonValue(), QJsonValue(QStringLiteral("1"))}) {
        qint32 int32 = 0;
        quint8 uint8 = 0;
        EXPECT_FALSE(readValue(wrong, int32) || readValue(wrong, uint8));
    }
}

} // namespace tarnelLib::controller
