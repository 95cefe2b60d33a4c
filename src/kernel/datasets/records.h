/**
 * The plain records of the structured calling style. They lie in the caller's memory and outlast the calls, and
 * that is how a run is cut into stages. Arrays are automation arrays; a null array is an empty one. The caller creates and frees
 * all of them; a stage writes cells, and lets an array grow where its result needs more elements.
 *
 * Field order is the interface. Counts and positions count from 1.
 */
#pragma once

#include <cstdint>

#include "core/platform.h"

/**
 * A table held column by column, each column an array of its own. The element type is that of the arrays: VT_R8, VT_I2 or
 * VT_BSTR; an array of another element size, or of texts in place of numbers, counts as empty.
 */
struct ST_MVect
{
    std::int32_t columns;          ///< column vectors in use
    std::int32_t secondDimension;  ///< the caller's own, carried
    std::int32_t thirdCount;       ///< the caller's own, carried
    std::int32_t rows;             ///< cells of a column in use
    SAFEARRAY* table;              ///< VT_I4, an integer table of the columns
    SAFEARRAY** vectors;           ///< `columns` arrays of one dimension
    SAFEARRAY* labels;             ///< VT_BSTR, labels of the columns
};

/** The table of 16-bit flags: ST_MVect over VT_I2 arrays. */
using ST_MVectShort = ST_MVect;

/** The table of texts: ST_MVect over VT_BSTR arrays. */
using ST_MVectStr = ST_MVect;

/** The qualitative variables of a sample and their categories, sorted by the codes of their characters. */
struct ST_QualiInfo
{
    std::int32_t maxCategories;    ///< of the variable with the most categories
    std::int32_t minCategories;    ///< of the variable with the fewest; 0 means a variable without any
    std::int32_t totalCategories;  ///< over all variables
    std::int32_t variables;        ///< number of variables
    SAFEARRAY* categoryCounts;     ///< VT_I4: number of categories of each variable
    ST_MVectStr categories;        ///< column v: categories of variable v
    ST_MVect frequencies;          ///< column v: sum of the weights of each category of variable v
    std::int32_t labelCount;       ///< cells of `labels` in use
    SAFEARRAY* labels;             ///< VT_BSTR: categories of all variables, variable after variable
};

/** A whole sample. Rows of all blocks are observations. */
struct ST_DataSet
{
    std::int64_t rows;                    ///< number of observations
    std::int64_t identifier;              ///< the caller's own, carried
    ST_MVect responses;                   ///< response columns
    std::int32_t responseFilterUsed;      ///< the caller's own, carried
    ST_MVectShort responseFilter;         ///< a flag for each cell of `responses`
    std::int32_t pX;                      ///< number of quantitative predictors
    std::int32_t quantitativeOption;      ///< the caller's own, carried
    ST_MVect quantitative;                ///< quantitative predictors
    std::int32_t quantitativeFilterUsed;  ///< the caller's own, carried
    ST_MVectShort quantitativeFilter;     ///< a flag for each cell of `quantitative`
    std::int32_t pQ;                      ///< number of qualitative predictors
    ST_MVectStr qualitative;              ///< qualitative predictors
    ST_MVectShort qualitativeFilter;      ///< a flag for each cell of `qualitative`
    ST_MVectStr secondQualitative;        ///< a second block of text columns
    ST_MVectShort secondFilter;           ///< a flag for each cell of `secondQualitative`
    SAFEARRAY* factorTable;               ///< VT_I4, an integer table of the model
    SAFEARRAY* factorLabels;              ///< VT_BSTR, its labels
    SAFEARRAY* weights;                   ///< VT_R8, a weight for each observation
    SAFEARRAY* secondWeights;             ///< VT_R8, a second weight for each observation
    ST_MVectStr thirdQualitative;         ///< a third block of text columns
    ST_QualiInfo qualitativeInfo;         ///< categories of `qualitative`
    SAFEARRAY* rowFilter;                 ///< VT_I2: any value but 0 leaves the observation out
    ST_MVect indicators;    ///< the first column marks the observations of the validation sample with 1
    ST_MVect otherColumns;  ///< further columns that belong to the sample as it was given
    SAFEARRAY* output;      ///< VT_R8, a result table
};

/** Shapes of a run's output tables, so that the caller can lay them out. */
struct ST_TableFormats
{
    std::int32_t count;  ///< tables described
    SAFEARRAY* shapes;   ///< VT_I4, two dimensions, count x 2: rows and columns of each table
};

/** The outcome of a stage, with the texts of its message. Zeros before the first stage. */
struct ErrorInfo
{
    std::int32_t style;       ///< kind of message: 48 a warning, 64 information
    std::int32_t status;      ///< negative: a failure was recorded, and the stages that follow do nothing
    std::int32_t numbers[3];  ///< three numbers of the message, carried
    std::int32_t detailNumbers[2];  ///< two numbers of the detail, carried
    std::int16_t detailFlag;        ///< a flag of the detail, carried
    BSTR title;                     ///< heading of the message
    BSTR message;                   ///< its text
    BSTR code;                      ///< its code, module word and number
    BSTR detail;                    ///< a further text
    BSTR detailText;                ///< a further text
};
