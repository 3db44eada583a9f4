// Comes to each of the libraries that the library stands on, and logs to the file that it is given.

#include <iostream>

#include "nelvo/core/guid.h"
#include "nelvo/logging/channels.h"
#include "nelvo/logging/log_channel.h"
#include "nelvo/logging/receiver/log_start.h"

int main(int /*argc*/, char* argv[])
{
    logging::start_log(argv[1], false, true, true);
    logging::channels::cli.info("Built on the installed library");
    std::cout << Guid::Parse("00112233-4455-6677-8899-AABBCCDDEEFF").ToString() << '\n'
              << (Guid::Generate().IsNull() ? "null" : "new") << '\n';
}
