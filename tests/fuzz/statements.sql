Select * from Items
Select * from Items where ItemCode = 5 and (PartCode = 'O''Neill' or Rate < -2.5) order by Rate desc, Items.Rate
Select Distinct Higher from Items where PartCode is not null order by Higher desc
Select Items.*, OTQty as Q from Items inner join Stock on Items.ItemCode = Stock.ItemCode where Q > 1
Select Sum(OTQty), Count(*), Max(StkDate), Min(Rate), Avg(Rate) from Items left join Stock on Items.ItemCode = Stock.ItemCode
Select Higher, Sum(Rate) as S, Count(PartCode) from Items where Rate between 1 and 1.5e3 group by Higher having Sum(Rate) > 0 and Higher in (1, 2, 3)
Select * from Stock where StkDate >= CDate('05/Apr/2005') and Not (Open = True)
Select * from Items where Left( PartCode,3  ) = 'abc'
Select * from Items where Left(PartCode, 0) = '' or PartCode <> ''
Delete * from Items where ItemCode not in (1, 2.0, -3)
Delete from Stock where ItemCode = 1
Select ItemCode + 1 - Rate * 2 / 3 as X from Items order by X desc
Select (Rate + OTQty) * (1.25 - Rate) from Items right outer join (Stock inner join [Group Names] on FrmId = Stock.ItemCode) on Items.ItemCode = FrmId
Select [Group] from [Group Names] where [Note] is null or Serial = '{4AD4357B-B8E3-4C7E-A90C-AE37A3BA1567}'
Select Max(Weight), Sum(Big) from [Group Names] where Big > 0.0001 and Photo is not null
Select Count(*) from Items as A inner join Items on 1 = 1
