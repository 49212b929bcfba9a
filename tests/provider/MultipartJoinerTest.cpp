#include "provider/MultipartJoiner.h"
#include "tests/Testing.h"

const Row<const char*, const char*> joinRows[] = {
    {"None", "[]", "[]"},
    {"Single", "[{'message':'a'}]", "[{'message':'a'}]"},
    {"Complete",
     "[{'guid':'1','part-id':7,'part-index':1,'part-count':2,'message':'lo'},"
     " {'guid':'2','part-id':7,'part-index':0,'part-count':2,'message':'Hel'}]",
     "[{'guid':'1','message':'Hello'}]"},
    {"FirstPartMissing", "[{'part-id':7,'part-index':1,'part-count':2,'message':'lo'}]",
     "[{'part-id':7,'part-index':1,'part-count':2,'message':' ... lo','parts':[null,'lo']}]"},
    {"LastPartsMissing", "[{'part-id':7,'part-index':0,'part-count':3,'message':'a'}]",
     "[{'part-id':7,'part-index':0,'part-count':3,'message':'a ...  ... ','parts':['a',null,null]}]"},
    {"RepeatedPart",
     "[{'part-id':7,'part-index':0,'part-count':1,'message':'old'},"
     " {'part-id':7,'part-index':0,'part-count':1,'message':'new'}]",
     "[{'message':'new'}]"},
    {"IndexAboveTheFirstCount",
     "[{'part-id':7,'part-index':0,'part-count':1,'message':'a'},"
     " {'part-id':7,'part-index':2,'part-count':3,'message':'c'}]",
     "[{'part-id':7,'part-index':0,'part-count':1,'message':'a ... c','parts':['a',null,'c']}]"},
    {"SendersAreNotCompared",
     "[{'source':'1','part-id':7,'part-index':0,'part-count':2,'message':'a'},"
     " {'source':'2','part-id':7,'part-index':1,'part-count':2,'message':'b'}]",
     "[{'source':'1','message':'ab'}]"},
    {"SingleMessagesFirstThenOrderOfReferences",
     "[{'part-id':9,'part-index':0,'part-count':1,'message':'nine'},"
     " {'part-id':8,'part-index':0,'part-count':1,'message':'eight'}, {'message':'a'}]",
     "[{'message':'a'}, {'message':'eight'}, {'message':'nine'}]"},
};
TEST_ROWS(Join, JoinsTheParts, joinRows) {
  const Json::Value records = json(GetParam().given);
  Json::Value joined(Json::arrayValue);
  for (const Json::Value& record : joinMultipartMessages({records.begin(), records.end()}))
    joined.append(record);
  EXPECT_EQ(joined.toStyledString(), json(GetParam().expected).toStyledString());
}

TEST(JoinParts, LeavesOtherRecordsUnchanged) {
  for (const char* const text : {"{'message':'a','parts':['b']}", "{'message':'a','part-id':1}",
                                 "{'message':'a','part-id':1,'parts':{}}", "[1]"}) {
    Json::Value record = json(text);
    joinParts(record);
    EXPECT_EQ(record, json(text));
  }
}
