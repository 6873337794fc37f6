// Tables of questions and answers, a line of text each.
// SPDX-License-Identifier: see LICENSE

#pragma once

#include <gtest/gtest.h>

#include <string>

/// Each row is "question => answer": expects of `answer`, a function of one text, just these answers.
template <class Answer, class... Rows>
void expectRows(Answer&& answer, const Rows&... rows)
{
    for (const std::string& row : {std::string(rows)...}) {
        const std::string question = row.substr(0, row.find(" => "));
        EXPECT_EQ(question + " => " + answer(question), row);
    }
}
