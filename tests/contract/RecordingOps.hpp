#pragma once

#include <pkgcore/filesystem/FileSystemOps.hpp>

#include "tests/support/scripted_platform/Show.hpp"

#include <boost/make_shared.hpp>

#include <exception>
#include <fstream>
#include <string>
#include <vector>

namespace contract {

/// A back end that remembers how it was called and answers what it was told to.
class RecordingOps : public opc::FileSystemOps {
public:
    /// What every operation with out-parameters does: writes these where they are not empty, then throws
    /// `escaping`.
    std::string message;
    boost::system::error_code code;
    bool assignsCode = false;
    std::exception_ptr escaping;

    /// What every operation answers, by the type of its result.
    opc::ustring text = u"result";
    bool flag = true;
    opc::Perms::Perms_tag perms = static_cast<opc::Perms::Perms_tag>(0640);
    boost::posix_time::ptime time{boost::gregorian::date(2024, 2, 29)};
    boost::shared_ptr<std::istream> input = boost::make_shared<std::ifstream>();
    boost::shared_ptr<std::ostream> output = boost::make_shared<std::ofstream>();

    /// Calls as "doExists('a')", and what the out-parameters held when the calls began.
    std::vector<std::string> calls;
    std::vector<std::string> messagesGiven;
    std::vector<boost::system::error_code> codesGiven;
    /// What the back end leaves in the out-parameter of doGetLocalPath and appends in doGetFiles.
    opc::ustring localPath = u"local";

    void failWith(const std::string& text_, boost::system::error_code code_) {
        message = text_;
        code = code_;
        assignsCode = true;
    }

protected:
    using Code = boost::system::error_code;
    using Text = opc::ustring;
    using Message = std::string;

    Text doGetTempName(const Text& path, Message& msg, Code& ec) override {
        return act(text, "doGetTempName", msg, ec, path);
    }
    Text doGetParentPath(const Text& path, Message& msg, Code& ec) override {
        return act(text, "doGetParentPath", msg, ec, path);
    }
    Text doGetFilename(const Text& path, Message& msg, Code& ec) override {
        return act(text, "doGetFilename", msg, ec, path);
    }
    Text doGetExtension(const Text& path, Message& msg, Code& ec) override {
        return act(text, "doGetExtension", msg, ec, path);
    }
    Text doAppendPath(const Text& base, const Text& toAppend, Message& msg, Code& ec) override {
        return act(text, "doAppendPath", msg, ec, base, toAppend);
    }
    Text doNormalizePath(const Text& path, Message& msg, Code& ec) override {
        return act(text, "doNormalizePath", msg, ec, path);
    }
    bool doGetLocalPath(const Text& path, Text& localPath_) override {
        note("doGetLocalPath", path);
        localPath_ = localPath;
        return flag;
    }
    bool doIsAbsolutePath(const Text& path) override {
        note("doIsAbsolutePath", path);
        return flag;
    }
    bool doExists(const Text& path, Message& msg, Code& ec) override {
        return act(flag, "doExists", msg, ec, path);
    }
    bool doIsFile(const Text& path, Message& msg, Code& ec) override {
        return act(flag, "doIsFile", msg, ec, path);
    }
    bool doIsFolder(const Text& path, Message& msg, Code& ec) override {
        return act(flag, "doIsFolder", msg, ec, path);
    }
    bool doIsSymlink(const Text& path, Message& msg, Code& ec) override {
        return act(flag, "doIsSymlink", msg, ec, path);
    }
    opc::Perms::Perms_tag doGetPermissions(const Text& path, Message& msg, Code& ec) override {
        return act(perms, "doGetPermissions", msg, ec, path);
    }
    void doSetPermissions(const Text& path, opc::Perms::Perms_tag bits, Message& msg, Code& ec) override {
        act(flag, "doSetPermissions", msg, ec, path, bits);
    }
    boost::posix_time::ptime doGetLastModifiedTime(const Text& path, Message& msg, Code& ec) override {
        return act(time, "doGetLastModifiedTime", msg, ec, path);
    }
    void doSetLastModifiedTime(const Text& path, boost::posix_time::ptime newTime, Message& msg,
                               Code& ec) override {
        act(flag, "doSetLastModifiedTime", msg, ec, path, newTime);
    }
    Text doGetLinkTarget(const Text& path, Message& msg, Code& ec) override {
        return act(text, "doGetLinkTarget", msg, ec, path);
    }
    void doGetFiles(const Text& folder, std::vector<Text>& files, bool recursive, Message& msg,
                    Code& ec) override {
        files.push_back(text);
        act(flag, "doGetFiles", msg, ec, folder, recursive);
    }
    boost::shared_ptr<std::istream> doCreateInputStream(const Text& path, int mode, Message& msg,
                                                        Code& ec) override {
        return act(input, "doCreateInputStream", msg, ec, path, mode);
    }
    boost::shared_ptr<std::ostream> doCreateOutputStream(const Text& path, int mode, Message& msg,
                                                         Code& ec) override {
        return act(output, "doCreateOutputStream", msg, ec, path, mode);
    }
    void doCreateFolder(const Text& path, Message& msg, Code& ec) override {
        act(flag, "doCreateFolder", msg, ec, path);
    }
    void doCreateFolders(const Text& path, Message& msg, Code& ec) override {
        act(flag, "doCreateFolders", msg, ec, path);
    }
    void doCreateSymlink(const Text& target, const Text& link, Message& msg, Code& ec) override {
        act(flag, "doCreateSymlink", msg, ec, target, link);
    }
    void doCopy(const Text& from, const Text& to, opc::ExistsMode mode, Message& msg, Code& ec) override {
        act(flag, "doCopy", msg, ec, from, to, mode);
    }
    void doRename(const Text& from, const Text& to, Message& msg, Code& ec) override {
        act(flag, "doRename", msg, ec, from, to);
    }
    void doRemove(const Text& path, Message& msg, Code& ec) override { act(flag, "doRemove", msg, ec, path); }
    void doRemoveAll(const Text& path, Message& msg, Code& ec) override {
        act(flag, "doRemoveAll", msg, ec, path);
    }

private:
    template <typename... Arguments>
    void note(const std::string& name, const Arguments&... arguments) {
        std::string list;
        ((list += (list.empty() ? "" : ", ") + scripted::show(arguments)), ...);
        calls.push_back(name + "(" + list + ")");
    }

    template <typename Result, typename... Arguments>
    Result act(const Result& result, const std::string& name, Message& msg, Code& ec,
               const Arguments&... arguments) {
        note(name, arguments...);
        messagesGiven.push_back(msg);
        codesGiven.push_back(ec);
        msg += message;
        if (assignsCode) {
            ec = code;
        }
        if (escaping) {
            std::rethrow_exception(escaping);
        }
        return result;
    }
};

}  // namespace contract
