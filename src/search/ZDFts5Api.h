#pragma once

#include <sqlite3.h>

/// The FTS5 extension interface of a connection, through which tokenizers and auxiliary
/// functions are registered; null when the connection has no FTS5.
inline fts5_api *zdFts5Api(sqlite3 *db)
{
    fts5_api *api = nullptr;
    sqlite3_stmt *statement = nullptr;
    if (sqlite3_prepare_v2(db, "SELECT fts5(?1)", -1, &statement, nullptr) != SQLITE_OK)
        return nullptr;
    sqlite3_bind_pointer(statement, 1, &api, "fts5_api_ptr", nullptr);
    sqlite3_step(statement);
    sqlite3_finalize(statement);
    return api;
}
