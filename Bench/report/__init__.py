"""The report that ./bench writes: what is measured, beside what, and how it is shown."""
