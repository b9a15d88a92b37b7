#pragma once

#include <pkgcore/pkgcore.hpp>

#include <cstdint>
#include <istream>

/// Opens a file for reading. A stream that did not open says nothing but that: the words of the exception are
/// ours.
boost::shared_ptr<std::istream> openInput(opc::FileSystemOps& files, const opc::ustring& path);

/// The length of what the stream reads, which then stands at its beginning; 0 if it cannot tell.
std::uintmax_t lengthOf(std::istream& stream);

struct Comparison {
    std::uintmax_t equalBytes = 0;
    bool equal = true;
};

/// Compares to the end or to the first difference. Throws Interrupted once a signal has asked the program to
/// stop.
Comparison compareStreams(std::istream& one, std::istream& other);
