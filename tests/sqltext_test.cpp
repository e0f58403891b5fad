#include "controller/entities/user.h"
#include "controller/storage/querypreparer.h"

#include <gtest/gtest.h>

namespace tarnelLib::controller {

TEST(SqlText, tablesAreCreatedAsEveryFileHasThem)
{
    EXPECT_EQ(sql::createTable(tableOf<User>()),
              "CREATE TABLE Users (UsersId UNSIGNED BIG INT PRIMARY KEY,UsersName VARCHAR(255),"
              "UsersLogin VARCHAR(255),UsersContacts VARCHAR(255),UsersIsActive BOOLEAN,"
              "UsersDomainId UNSIGNED BIG INT,UsersOrgId UNSIGNED BIG INT,UsersRoles UNSIGNED BIG INT,"
              "UsersPhone DOUBLE)");
}

} // namespace tarnelLib::controller
