/** The coded design table and its description, as BuildModelTable2 gives them and RunOLS1 takes them. */
#ifndef KORVENRG_FRONTEND_DESIGN_H
#define KORVENRG_FRONTEND_DESIGN_H

#include <string>
#include <vector>

#include "model_data.h"

namespace korvenrg::frontend {

/** The doors' states of a column. */
enum ColumnState : int
{
    kCandidate = -1,
    kInModel = 0,
    kExcluded = 1,
    kDroppedByConstraint = 40000,
    kConstant = 50000,
    kRefusedByTolerance = 60000
};

/** Arrays by columns. */
struct Design
{
    int rows = 0;     ///< n
    int columns = 0;  ///< p
    int factors = 0;
    int interlevel = 1;

    std::vector<int> factorType;       ///< factors
    std::vector<int> factorActive;     ///< factors
    std::vector<int> factorVariables;  ///< factors x interlevel, 0 after the last
    std::vector<int> factorNbVars;     ///< factors
    std::vector<int> factorNbColumns;  ///< factors
    std::vector<int> factorNbCells;    ///< factors, columns that each would have, in the model or not

    std::vector<double> table;         ///< n x p
    std::vector<double> validation;    ///< validation rows x p, coded like the table
    std::vector<double> prediction;    ///< prediction rows x p
    std::vector<std::string> labels;   ///< p
    std::vector<int> parents;          ///< p, factor numbers
    std::vector<double> frequencies;   ///< p
    std::vector<int> states;           ///< p
    std::vector<double> reportedFrom;  ///< p x p, from fitted columns to reported parameters
};

/** Throws UserError when the model has more columns or cells than the doors' counts hold. */
Design BuildDesign(const ModelData& data, Constraint constraint);

}  // namespace korvenrg::frontend

#endif
