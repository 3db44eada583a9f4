#include <glog/logging.h>

#include "bench/support/log_peers.h"

// Its prefix is its own: "I20261121 21:12:00.123456 4711 glog_peer.cpp:19] ".
peer_t GlogTo(const std::string& path)
{
    // One file that is appended to, so that it can be emptied.
    FLAGS_timestamp_in_logfile_name = false;
    FLAGS_logbufsecs = 0;
    google::SetLogDestination(google::GLOG_INFO, path.c_str());
    google::SetLogSymlink(google::GLOG_INFO, "");
    google::InitGoogleLogging("bench");
    return [](const std::string& text) { LOG(INFO) << text; };
}
