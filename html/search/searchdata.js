var indexSectionsWithContent =
{
};

var indexSectionNames =
{
};

var indexSectionLabels =
{
};

