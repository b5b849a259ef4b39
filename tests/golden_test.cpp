// The golden vectors against the library's pure functions, bit for bit.
#include "measure/radiometry.h"
#include "measure/tablelookup.h"
#include "measure/transmission.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace {

/// One case of a file, its fields by column name.
struct Row {
    std::string line;
    std::map<std::string, std::string> text;

    float operator[](const char* column) const { return std::stof(text.at(column)); }
    int whole(const char* column) const { return std::stoi(text.at(column)); }
};

/// The cases of a file, of which there are at least so many.
std::vector<Row> rows(const std::string& file, std::size_t least) {
    std::ifstream in(GOLDEN_DIRECTORY "/" + file);
    std::vector<std::string> columns;
    std::vector<Row> all;
    for (std::string line; std::getline(in, line);) {
        std::istringstream words(line);
        const std::vector<std::string> fields{std::istream_iterator<std::string>(words), {}};
        if (line[0] == '#')
            continue;
        if (columns.empty()) {
            columns = fields;
            continue;
        }
        all.push_back({line, {}});
        for (std::size_t i = 0; i < columns.size(); ++i)
            all.back().text[columns[i]] = fields.at(i);
    }
    EXPECT_GE(all.size(), least) << file;
    return all;
}

TempInfoTab tableOf(const Row& row) {
    static const std::vector<Row> tables = rows("tables.tsv", 6);
    TempInfoTab tab{};
    for (const Row& table : tables) {
        if (table.text.at("name") != row.text.at("table"))
            continue;
        tab.minAD = static_cast<std::uint16_t>(table.whole("minAD"));
        tab.maxAD = static_cast<std::uint16_t>(table.whole("maxAD"));
        std::istringstream entries(table.text.at("entries"));
        for (char mark = ','; mark == ','; ++tab.tempNum, mark = '\0', entries >> mark)
            entries >> tab.temp[tab.tempNum] >> mark >> tab.ad[tab.tempNum];
    }
    return tab;
}

/// The model of a row, whose intermediate results are compared as well.
irmcore::Model modelOf(const Row& row) {
    const auto metres = static_cast<int>(row["dist"]);
    const float trans = irmcore::transmission(row["envTemp"], row["humid"], metres);
    EXPECT_EQ(trans, row["transmission"]) << row.line;
    EXPECT_EQ(irmcore::tableDeltaAd(tableOf(row), row["shutterTemp"]), row["shutterTerm"])
        << row.line;
    return {row["emiss"], row["offset"], row["envTemp"], row["reflecTemp"], trans, 0, 0, false};
}

/// Compares what the row says of a reading; "-" stands for a field that was not written.
void compare(const IrTempStru& reading, const Row& row) {
    EXPECT_EQ(reading.status, row.text.at("status")) << row.line;
    EXPECT_EQ(reading.temp, row["temp"]) << row.line;
    const bool written = row.text.at("ad") != "-";
    EXPECT_EQ(reading.ad, written ? row.whole("ad") : reading.ad) << row.line;
}

TEST(Golden, airAndDewPoint) {
    for (const Row& row : rows("transmission.tsv", 60))
        EXPECT_EQ(irmcore::transmission(row["envTemp"], row["humid"], row.whole("dist")),
                  row["transmission"])
            << row.line;
    for (const Row& row : rows("dewpoint.tsv", 20))
        EXPECT_EQ(irmcore::dewPoint(row["envTemp"], row["humid"]), row["dewpoint"]) << row.line;
}

TEST(Golden, tableConversion) {
    for (const Row& row : rows("table_conversion.tsv", 158)) {
        const TempInfoTab table = tableOf(row);
        const float argument = row["argument"];
        if (row.text.at("operation") == "calTemp")
            compare(irmcore::adToTableTemp(table, static_cast<unsigned>(argument)), row);
        else if (row.text.at("operation") == "calAD")
            compare(irmcore::tempToTableAd(table, argument), row);
        else
            EXPECT_EQ(irmcore::tableDeltaAd(table, argument), row["deltaAD"]) << row.line;
    }
}

TEST(Golden, countToTemperature) {
    for (const Row& row : rows("ad_to_temp.tsv", 400)) {
        irmcore::Model model = modelOf(row);
        model.rangeMin = row.whole("rangeMin");
        model.rangeMax = row.whole("rangeMax");
        const auto ad = static_cast<unsigned>(row.whole("ad"));
        const IrTempStru reading = irmcore::objectTemp(irmcore::termsOf(model), tableOf(row),
                                                       row["shutterTerm"], row["deltaTemp"], ad);
        compare(reading, row);
        EXPECT_EQ(reading.correctAD, row.whole("correctAD")) << row.line;
        EXPECT_EQ(reading.deltaAD, row.whole("deltaAD")) << row.line;
    }
}

TEST(Golden, temperatureToCount) {
    for (const Row& row : rows("temp_to_ad.tsv", 250))
        compare(
            irmcore::objectAd(modelOf(row), tableOf(row), row["shutterTerm"], row["temperature"]),
            row);
}

} // namespace
