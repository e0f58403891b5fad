#!/bin/sh
# Looks into a copy of the file: the names of the first users.
set -eu
# [look]
cp CacheDb copy
sqlite3 -box copy 'SELECT UsersId, UsersName FROM Users LIMIT 10'
# [look]
