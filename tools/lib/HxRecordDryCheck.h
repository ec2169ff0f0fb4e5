#pragma once
// HxRecordDryCheck: the output check of hxrecord --check, which changes nothing on disk.

#include <string>
#include <vector>

#include "analysis/writers/HxOutputWriterVector.h"
#include "framework/HxTypes.h"

/// Checks, as hxCheckOutputWritable does, that every file `outputBase` + extension of `writers`
/// could be written, but creates no directory and opens no file: a missing output directory
/// must be creatable (its nearest existing ancestor a directory this process may write), an
/// existing file writable, a new one's directory writable. The base must not name a directory,
/// two writers must not share a file and no file may be one of `inputs`. Returns false with
/// the message hxCheckOutputWritable would give (or says why the directory could not be made).
HxBoolean hxCheckOutputWouldBeWritable(const std::string& outputBase, const HxOutputWriterVector& writers,
                                       const std::vector<std::string>& inputs, std::string& error);
