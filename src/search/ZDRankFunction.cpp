#include "ZDRankFunction.h"

#include "ZDFts5Api.h"

#include <cmath>
#include <vector>

namespace {

struct RankData
{
    double averageSize = 0;
    std::vector<double> idf;
    std::vector<double> frequencies;
};

int countRow(const Fts5ExtensionApi *, Fts5Context *, void *context)
{
    ++*static_cast<sqlite3_int64 *>(context);
    return SQLITE_OK;
}

void deleteRankData(void *data)
{
    delete static_cast<RankData *>(data);
}

// What does not depend on the row, worked out at the first row of a query and kept with it.
// The arithmetic follows bm25() step by step, so that both give the same numbers.
RankData *rankData(const Fts5ExtensionApi *api, Fts5Context *fts, const sqlite3_int64 *counts, int *rc)
{
    if (auto *data = static_cast<RankData *>(api->xGetAuxdata(fts, 0)))
        return data;
    auto *data = new RankData;
    const int phrases = api->xPhraseCount(fts);
    data->idf.assign(size_t(phrases), 0);
    data->frequencies.assign(size_t(phrases), 0);
    sqlite3_int64 rows = 0;
    sqlite3_int64 tokens = 0;
    *rc = api->xRowCount(fts, &rows);
    if (*rc == SQLITE_OK)
        *rc = api->xColumnTotalSize(fts, -1, &tokens);
    if (*rc == SQLITE_OK)
        data->averageSize = double(tokens) / double(rows);
    for (int i = 0; *rc == SQLITE_OK && i < phrases; ++i) {
        sqlite3_int64 hits = counts ? counts[i] : -1;
        if (hits < 0) {
            hits = 0;
            *rc = api->xQueryPhrase(fts, i, &hits, countRow);
        }
        if (*rc == SQLITE_OK) {
            double idf = std::log((double(rows) - double(hits) + 0.5) / (double(hits) + 0.5));
            if (idf <= 0.0)
                idf = 1e-6;
            data->idf[size_t(i)] = idf;
        }
    }
    if (*rc == SQLITE_OK)
        *rc = api->xSetAuxdata(fts, data, deleteRankData);
    else
        delete data;
    return *rc == SQLITE_OK ? data : nullptr;
}

void rank(const Fts5ExtensionApi *api, Fts5Context *fts, sqlite3_context *result, int argumentCount,
          sqlite3_value **arguments)
{
    const double k1 = 1.2;
    const double b = 0.75;
    const auto *counts = argumentCount > 0 ? static_cast<const sqlite3_int64 *>(sqlite3_value_pointer(
                                                 arguments[0], ZDRankFunction::countsPointerType))
                                           : nullptr;
    int rc = SQLITE_OK;
    RankData *data = rankData(api, fts, counts, &rc);
    int instances = 0;
    if (rc == SQLITE_OK) {
        std::fill(data->frequencies.begin(), data->frequencies.end(), 0.0);
        rc = api->xInstCount(fts, &instances);
    }
    for (int i = 0; rc == SQLITE_OK && i < instances; ++i) {
        int phrase = 0;
        int column = 0;
        int offset = 0;
        rc = api->xInst(fts, i, &phrase, &column, &offset);
        if (rc == SQLITE_OK)
            data->frequencies[size_t(phrase)] += 1.0;
    }
    double size = 0;
    if (rc == SQLITE_OK) {
        int tokens = 0;
        rc = api->xColumnSize(fts, -1, &tokens);
        size = double(tokens);
    }
    if (rc != SQLITE_OK) {
        sqlite3_result_error_code(result, rc);
        return;
    }
    double score = 0.0;
    for (size_t i = 0; i < data->idf.size(); ++i) {
        const double f = data->frequencies[i];
        score += data->idf[i] * ((f * (k1 + 1.0)) / (f + k1 * (1 - b + b * size / data->averageSize)));
    }
    sqlite3_result_double(result, -1.0 * score);
}

} // namespace

namespace ZDRankFunction {

bool registerWith(sqlite3 *db)
{
    fts5_api *api = zdFts5Api(db);
    return api && api->xCreateFunction(api, "zdrank", nullptr, rank, nullptr) == SQLITE_OK;
}

} // namespace ZDRankFunction
