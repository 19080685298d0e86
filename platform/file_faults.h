// Lets tests make file operations fail. input_file.h and output_file.h call faultOf before each operation; without a
// test that costs a load and a branch.
#pragma once

namespace qs {

enum class FileOperation { Examine, Open, Read, Write, Sync, Rename, Remove };

// Returns the system's error code with which an operation is to fail, or 0 to let it happen.
using FileFault = int (*)(FileOperation);

// Null, which is the default, lets everything happen.
void setFileFault(FileFault fault);

// The platform layer calls it before each operation.
int faultOf(FileOperation operation);

}  // namespace qs
