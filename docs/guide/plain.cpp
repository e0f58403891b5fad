/// Starts the cache, fills it if it is new, and stops it.
#include <iostream>
#include <tarnel/tarnel.hpp>

using namespace tarnel;

namespace {

/// What the server sends stands in for it here.
void askServerForEverything(const Cache &cache)
{
    cache.add<User>(R"({"D": {"items": [{"id": 7, "name": "Ada", "active": 1}]}})").value();
}

} // namespace

//! [all]
int main()
{
    try {
        Cache cache; // Its end stops it.
        if (cache.start().value().isNew())
            askServerForEverything(cache);
        std::cout << utf8(cache.get<User>(7)->name) << '\n';
    } catch (const Error &error) { // With the code and the reason.
        std::cerr << error.what() << '\n';
        return 1;
    }
}
//! [all]
