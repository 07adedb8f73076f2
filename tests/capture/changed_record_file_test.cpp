#include <gtest/gtest.h>

#include "capture/changed_record_file.h"
#include "support/recording_builder.h"
#include "support/temp_dir.h"

using namespace kestrel;
using test::RecordingBuilder;

TEST(RecordFile, ChangedRecordFileOpensCreatesOrSaysWhy)
{
    test::TempDir dir;
    RecordFile f;

    f.setPath(dir.file("new.ksr"));
    ChangedRecordFile r = OpenChangedRecordFile(f);
    EXPECT_TRUE(r.result.ok() && r.created);
    EXPECT_TRUE(f.isOpen(RecordHandle::View));

    RecordingBuilder::writeNumbered(dir.file("old.ksr"), 4);
    f.setPath(dir.file("old.ksr"));
    r = OpenChangedRecordFile(f);
    EXPECT_TRUE(r.result.ok() && !r.created && r.resetGrid);
    EXPECT_EQ(f.openCount(RecordHandle::View), 1); // the old view handle was closed first

    f.setPath(dir.file("missing/folder/x.ksr"));
    r = OpenChangedRecordFile(f);
    EXPECT_EQ(r.result.code, kRecordCreateFailed);
    EXPECT_NE(r.result.detail.find("x.ksr"), std::string::npos);
    EXPECT_FALSE(f.isOpen(RecordHandle::View));
}
