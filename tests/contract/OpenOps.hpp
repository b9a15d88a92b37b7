#pragma once

namespace contract {

/// A back end with its protected operations in reach.
template <typename Ops>
class OpenOps : public Ops {
public:
    using Ops::doAppendPath;
    using Ops::doCopy;
    using Ops::doCreateFolder;
    using Ops::doCreateFolders;
    using Ops::doCreateInputStream;
    using Ops::doCreateOutputStream;
    using Ops::doCreateSymlink;
    using Ops::doExists;
    using Ops::doGetExtension;
    using Ops::doGetFilename;
    using Ops::doGetFiles;
    using Ops::doGetLastModifiedTime;
    using Ops::doGetLinkTarget;
    using Ops::doGetLocalPath;
    using Ops::doGetParentPath;
    using Ops::doGetPermissions;
    using Ops::doGetTempName;
    using Ops::doIsAbsolutePath;
    using Ops::doIsFile;
    using Ops::doIsFolder;
    using Ops::doIsSymlink;
    using Ops::doNormalizePath;
    using Ops::doRemove;
    using Ops::doRemoveAll;
    using Ops::doRename;
    using Ops::doSetLastModifiedTime;
    using Ops::doSetPermissions;
    using Ops::Ops;
};

}  // namespace contract
